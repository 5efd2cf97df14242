// Solid files: SAT through our writer, STEP and STL through Open CASCADE.
// Every file is written beside its target and renamed into place.
#include <BRepGProp.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <GProp_GProps.hxx>
#include <IFSelect_ReturnStatus.hxx>
#include <Interface_Static.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <STEPControl_Reader.hxx>
#include <STEPControl_Writer.hxx>
#include <StepBasic_Product.hxx>
#include <StepData_StepModel.hxx>
#include <TCollection_HAsciiString.hxx>
#include <BRep_Tool.hxx>
#include <Poly_Triangulation.hxx>
#include <TopExp_Explorer.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>
#include <array>
#include <vector>
#include <TopoDS_Shape.hxx>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <tuple>

#include "host/base/safe_write.h"
#include "host/brep/solid.h"

namespace host::brep {

namespace {

const TopoDS_Shape& ShapeOf(const AcDb3dSolid& solid) {
  return *static_cast<const TopoDS_Shape*>(solid.shapeHandle());
}

// Open CASCADE reports to the console; its messages are not ours to show.
void Quiet() {
  static const bool done = [] {
    Message::DefaultMessenger()->ChangePrinters().Clear();
    return true;
  }();
  (void)done;
}

}  // namespace

bool WriteStep(const AcDb3dSolid& solid, const std::string& path, std::string& error, const std::string& productName) {
  if (solid.isNull()) {
    error = "no solid to write";
    return false;
  }
  Quiet();
  STEPControl_Writer writer;
  Interface_Static::SetCVal("write.step.schema", "AP214IS");
  Interface_Static::SetCVal("write.step.unit", "MM");
  // Curves on the surfaces are derived by every reader; leaving them out
  // halves the time of writing.
  Interface_Static::SetIVal("write.surfacecurve.mode", 0);

  if (writer.Transfer(ShapeOf(solid), STEPControl_AsIs) != IFSelect_RetDone) {
    error = "the solid could not be turned into STEP";
    return false;
  }
  // The product is named here: the translator's own naming numbers the
  // products of a session ("T-1 2", "T-1 3", ...).
  const std::string product = productName.empty() ? std::filesystem::path(path).stem().string() : productName;
  const Handle(StepData_StepModel) model = writer.Model();
  for (int i = 1; !model.IsNull() && i <= model->NbEntities(); ++i) {
    const Handle(StepBasic_Product) p = Handle(StepBasic_Product)::DownCast(model->Value(i));
    if (p.IsNull()) continue;
    p->SetName(new TCollection_HAsciiString(product.c_str()));
    p->SetId(new TCollection_HAsciiString(product.c_str()));
  }
  host::SafeFile file(path);
  if (!file.open(error)) return false;
  errno = 0;
  if (writer.Write(file.tempPath().c_str()) != IFSelect_RetDone) {
    // The translator does not say why; the failed system call does.
    const int why = errno;
    error = path + ": cannot write the STEP file" + (why ? " (" + std::string(std::strerror(why)) + ")" : "");
    return false;
  }
  return file.commit(error);
}

bool WriteStl(const AcDb3dSolid& solid, const std::string& path, double chordalTolerance, std::string& error) {
  if (solid.isNull()) {
    error = "no solid to write";
    return false;
  }
  Quiet();
  TopoDS_Shape shape = ShapeOf(solid);
  BRepMesh_IncrementalMesh mesh(shape, chordalTolerance, false, 0.1, true);
  // Triangles of every face, turned with the face; those without area (the
  // mesher leaves one where a cone ends in a point) are left out so that
  // every edge is shared by exactly two triangles.
  std::vector<std::array<float, 12>> triangles;
  for (TopExp_Explorer ex(shape, TopAbs_FACE); ex.More(); ex.Next()) {
    const TopoDS_Face& face = TopoDS::Face(ex.Current());
    TopLoc_Location loc;
    const Handle(Poly_Triangulation) tri = BRep_Tool::Triangulation(face, loc);
    if (tri.IsNull()) {
      error = "a face of the solid could not be meshed";
      return false;
    }
    const gp_Trsf trsf = loc.Transformation();
    const bool reversed = face.Orientation() == TopAbs_REVERSED;
    for (int t = 1; t <= tri->NbTriangles(); ++t) {
      int a, b, c;
      tri->Triangle(t).Get(a, b, c);
      if (reversed) std::swap(b, c);
      const gp_Pnt p[3] = {tri->Node(a).Transformed(trsf), tri->Node(b).Transformed(trsf), tri->Node(c).Transformed(trsf)};
      const gp_Vec n = gp_Vec(p[0], p[1]).Crossed(gp_Vec(p[0], p[2]));
      if (n.Magnitude() <= 1e-12 * (1 + p[0].Distance(p[1]) * p[0].Distance(p[2]))) continue;
      const gp_Dir d(n);
      triangles.push_back({static_cast<float>(d.X()), static_cast<float>(d.Y()), static_cast<float>(d.Z()),
                           static_cast<float>(p[0].X()), static_cast<float>(p[0].Y()), static_cast<float>(p[0].Z()),
                           static_cast<float>(p[1].X()), static_cast<float>(p[1].Y()), static_cast<float>(p[1].Z()),
                           static_cast<float>(p[2].X()), static_cast<float>(p[2].Y()), static_cast<float>(p[2].Z())});
    }
  }
  std::string bytes(84 + 50 * triangles.size(), '\0');
  std::snprintf(bytes.data(), 80, "envline solid, %zu triangles", triangles.size());
  const std::uint32_t count = static_cast<std::uint32_t>(triangles.size());
  std::memcpy(bytes.data() + 80, &count, 4);
  for (std::size_t i = 0; i < triangles.size(); ++i) std::memcpy(bytes.data() + 84 + 50 * i, triangles[i].data(), 48);
  return host::writeFileSafely(path, bytes, error);
}

bool StepVolume(const std::string& path, double& volume, std::string& error) {
  Quiet();
  STEPControl_Reader reader;
  if (reader.ReadFile(path.c_str()) != IFSelect_RetDone || reader.TransferRoots() == 0) {
    error = path + ": not a readable STEP file";
    return false;
  }
  GProp_GProps props;
  BRepGProp::VolumeProperties(reader.OneShape(), props);
  volume = props.Mass();
  return true;
}

bool WriteSat(const AcDb3dSolid& solid, const std::string& path, std::string& error) {
  std::string text;
  return SatText(solid, text, error) && host::writeFileSafely(path, text, error);
}

bool StlIsClosed(const std::string& path, std::string& error) {
  std::ifstream in(path, std::ios::binary);
  char header[80];
  std::uint32_t count = 0;
  if (!in.read(header, 80) || !in.read(reinterpret_cast<char*>(&count), 4)) {
    error = path + ": not a binary STL file";
    return false;
  }
  using Key = std::tuple<long long, long long, long long>;
  auto key = [](const float* p) {
    // Vertices shared by triangles are written identically: compare them exactly.
    return Key(std::llround(p[0] * 1e6), std::llround(p[1] * 1e6), std::llround(p[2] * 1e6));
  };
  std::map<std::pair<Key, Key>, int> edges;
  for (std::uint32_t t = 0; t < count; ++t) {
    float data[12];
    std::uint16_t attr;
    if (!in.read(reinterpret_cast<char*>(data), 48) || !in.read(reinterpret_cast<char*>(&attr), 2)) {
      error = path + ": the file ends inside triangle " + std::to_string(t);
      return false;
    }
    const Key k[3] = {key(data + 3), key(data + 6), key(data + 9)};
    for (int e = 0; e < 3; ++e) {
      Key a = k[e], b = k[(e + 1) % 3];
      if (b < a) std::swap(a, b);
      ++edges[{a, b}];
    }
  }
  for (const auto& [edge, uses] : edges)
    if (uses != 2) {
      error = path + ": an edge is used by " + std::to_string(uses) + " triangles";
      return false;
    }
  return count > 0;
}

}  // namespace host::brep

Acad::ErrorStatus AcDbBody::acisOut(const std::string& path, const AcArray<AcDbEntity*>& entities) {
  for (AcDbEntity* e : entities) {
    const auto* solid = AcDb3dSolid::cast(e);
    if (!solid) continue;
    std::string text, error;
    if (!host::brep::SatText(*solid, text, error)) return Acad::eNotApplicable;
    if (!host::writeFileSafely(path, text, error)) return Acad::eFileAccessErr;
    return Acad::eOk;  // one body a file
  }
  return Acad::eInvalidInput;
}
