// ACIS SAT text (version 7.0) of a solid of revolution, with exact faces:
// planes, cones (cylinders are cones with sine 0), spheres and tori. Every
// face is bounded by whole circles (no seam edges); a cone's apex on the
// axis is a curve-less edge in a loop of its own; edges run forward and
// only coedges turn; faces that are concave keep their surface and are
// marked reversed.
#include <cmath>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <numbers>

#include "host/brep/solid.h"

namespace host::brep {

namespace {
constexpr double kPi = std::numbers::pi;

// C-locale numbers with 17 significant digits; never "-0".
std::string num(double v) {
  if (v == 0 || std::fabs(v) < 1e-300) return "0";
  char buf[40];
  std::snprintf(buf, sizeof buf, "%.17g", v);
  return buf;
}
std::string vec(const AcGeVector3d& v) { return num(v.x) + " " + num(v.y) + " " + num(v.z); }
std::string pnt(const AcGePoint3d& p) { return num(p.x) + " " + num(p.y) + " " + num(p.z); }
std::string ref(int i) {
  // Formatted in place: "$" + std::to_string(i) trips GCC 12's -Wrestrict
  // false positive at -O3.
  char buf[16];
  std::snprintf(buf, sizeof buf, "$%d", i);
  return buf;
}

struct Coedge {
  int index = -1, loop = -1, partner = -1, edge = -1;
  bool reversed = false;
};
struct Loop {
  int index = -1, face = -1, next = -1;
  Coedge coedge;
};
struct Face {
  int index = -1, surface = -1, next = -1;
  bool reversed = false;
  std::string surfaceText;
  std::vector<Loop> loops;
};
struct Edge {
  int index = -1, curve = -1, vertex = -1, point = -1, coedge = -1;
  bool apex = false;
  AcGePoint3d at;
  std::string curveText;
};
}  // namespace

bool SatText(const AcDb3dSolid& solid, std::string& text, std::string& error) {
  const MeridianProfile* pr = solid.profile();
  if (!pr) {
    error = "only solids of revolution can be written as SAT";
    return false;
  }
  const auto& v = pr->vertices;
  const std::size_t n = v.size();
  const AcGeVector3d axis = pr->axisDir, up = pr->upDir;
  auto axisAt = [&](double x) { return pr->axisPoint + axis * x; };

  // One circle edge for every profile vertex off the axis.
  std::vector<Edge> edges;
  std::vector<int> circleOf(n, -1);
  for (std::size_t i = 0; i < n; ++i) {
    if (v[i].r <= 0) continue;
    Edge e;
    e.at = pr->World(v[i].x, v[i].r);
    e.curveText = "ellipse-curve $-1 -1 $-1 " + pnt(axisAt(v[i].x)) + " " + vec(axis) + " " + vec(up * -v[i].r) +
                  " 1 I I #";
    circleOf[i] = static_cast<int>(edges.size());
    edges.push_back(e);
  }
  std::vector<Face> faces;
  for (std::size_t i = 0; i < n; ++i) {
    const auto& a = v[i];
    const auto& b = v[(i + 1) % n];
    if (a.r <= 0 && b.r <= 0) continue;  // along the axis: no face
    if (std::hypot(b.x - a.x, b.r - a.r) < 1e-12) continue;
    Face f;
    // The travel direction at each end (the profile runs counter-clockwise,
    // so the solid lies to its left and the outward normal to its right).
    AcGePoint2d c;
    double rad = 0, s0, e0;
    const bool arc = a.bulge != 0 && host::arcFromBulge({a.x, a.r}, {b.x, b.r}, a.bulge, c, rad, s0, e0);
    if (arc) {
      // Convex arcs (counter-clockwise in the profile) face away from their centre.
      f.reversed = a.bulge < 0;
      if (std::fabs(c.y) <= 1e-9 * std::max(1.0, rad)) {
        f.surfaceText = "sphere-surface $-1 -1 $-1 " + pnt(axisAt(c.x)) + " " + num(rad) + " " + vec(-up) + " " +
                        vec(axis) + " forward_v I I I I #";
      } else {
        f.surfaceText = "torus-surface $-1 -1 $-1 " + pnt(axisAt(c.x)) + " " + vec(axis) + " " + num(c.y) + " " +
                        num(rad) + " " + vec(-up) + " forward_v I I I I #";
      }
    } else if (std::fabs(a.x - b.x) <= 1e-12) {
      // Perpendicular to the axis: a plane with its normal outward.
      const AcGeVector3d normal = (b.r > a.r) ? axis : -axis;
      f.surfaceText = "plane-surface $-1 -1 $-1 " + pnt(axisAt(a.x)) + " " + vec(normal) + " " + vec(up) +
                      " forward_v I I I I #";
    } else {
      // A cone (a cylinder when parallel to the axis), generated towards +x
      // from its widest end; its natural normal is the generator's left.
      double gx = b.x - a.x, gr = b.r - a.r;
      const double len = std::hypot(gx, gr);
      gx /= len, gr /= len;
      const bool towardsMinusX = gx < 0;
      if (towardsMinusX) gx = -gx, gr = -gr;
      f.reversed = !towardsMinusX;
      const auto& wide = a.r >= b.r ? a : b;
      f.surfaceText = "cone-surface $-1 -1 $-1 " + pnt(axisAt(wide.x)) + " " + vec(axis) + " " + vec(up * -wide.r) +
                      " 1 I I " + num(gr) + " " + num(gx) + " " + num(wide.r) + " forward I I I I #";
    }
    // Its boundaries: the circle at each end off the axis (the segment's
    // end: coedge forward, its start: reversed); a cone's apex on the axis.
    for (const std::size_t k : {i, (i + 1) % n}) {
      const bool atStart = k == i;
      if (v[k].r > 0) {
        Loop loop;
        loop.coedge.edge = circleOf[k];
        loop.coedge.reversed = atStart;
        f.loops.push_back(loop);
      } else if (!arc && std::fabs(a.x - b.x) > 1e-12) {
        Edge apex;
        apex.apex = true;
        apex.at = pr->World(v[k].x, 0);
        Loop loop;
        loop.coedge.edge = static_cast<int>(edges.size());
        edges.push_back(apex);
        f.loops.push_back(loop);
      }
    }
    faces.push_back(f);
  }
  if (faces.empty()) {
    error = "the profile has no face off its axis";
    return false;
  }
  // Indices: body, lump, transform, shell; each face with its surface,
  // loops and coedges; each edge with its curve, vertex and point.
  int next = 4;
  for (Face& f : faces) {
    f.index = next++;
    f.surface = next++;
    for (Loop& l : f.loops) {
      l.index = next++;
      l.coedge.index = next++;
    }
  }
  for (Edge& e : edges) {
    e.index = next++;
    if (!e.apex) e.curve = next++;
    e.vertex = next++;
    e.point = next++;
  }
  // Partners: the two coedges of each circle edge.
  std::vector<std::vector<Coedge*>> byEdge(edges.size());
  for (std::size_t fi = 0; fi < faces.size(); ++fi) {
    Face& f = faces[fi];
    f.next = fi + 1 < faces.size() ? faces[fi + 1].index : -1;
    for (std::size_t li = 0; li < f.loops.size(); ++li) {
      Loop& l = f.loops[li];
      l.face = f.index;
      l.next = li + 1 < f.loops.size() ? f.loops[li + 1].index : -1;
      l.coedge.loop = l.index;
      byEdge[static_cast<std::size_t>(l.coedge.edge)].push_back(&l.coedge);
    }
  }
  for (std::size_t ei = 0; ei < edges.size(); ++ei) {
    auto& cs = byEdge[ei];
    if (cs.empty()) {
      error = "an edge of the profile bounds no face";
      return false;
    }
    edges[ei].coedge = cs[0]->index;
    if (cs.size() == 2) {
      cs[0]->partner = cs[1]->index;
      cs[1]->partner = cs[0]->index;
    }
  }
  std::string out;
  char date[64];
  const std::time_t now = std::time(nullptr);
  std::strftime(date, sizeof date, "%a %b %e %H:%M:%S %Y", std::gmtime(&now));
  const std::string product = "envline 0.1.0", version = "ACIS 7.0 NT";
  out += "700 0 1 0\n";
  out += std::to_string(product.size()) + " " + product + " " + std::to_string(version.size()) + " " + version + " " +
         std::to_string(std::string(date).size()) + " " + date + "\n";
  out += "1 9.9999999999999995e-007 1e-010\n";
  out += "body $-1 -1 $-1 $1 $-1 $2 #\n";
  out += "lump $-1 -1 $-1 $-1 $3 $0 #\n";
  out += "transform $-1 -1 1 0 0 0 1 0 0 0 1 0 0 0 1 no_rotate no_reflect no_shear #\n";
  out += "shell $-1 -1 $-1 $-1 $-1 " + ref(faces[0].index) + " $-1 $1 #\n";
  for (const Face& f : faces) {
    out += "face $-1 -1 $-1 " + ref(f.next) + " " + ref(f.loops.empty() ? -1 : f.loops[0].index) + " $3 $-1 " +
           ref(f.surface) + (f.reversed ? " reversed" : " forward") + " single #\n";
    out += f.surfaceText + "\n";
    for (const Loop& l : f.loops) {
      out += "loop $-1 -1 $-1 " + ref(l.next) + " " + ref(l.coedge.index) + " " + ref(l.face) + " #\n";
      const Coedge& c = l.coedge;
      out += "coedge $-1 -1 $-1 " + ref(c.index) + " " + ref(c.index) + " " + ref(c.partner) + " " +
             ref(edges[static_cast<std::size_t>(c.edge)].index) + (c.reversed ? " reversed " : " forward ") +
             ref(c.loop) + " $-1 #\n";
    }
  }
  for (const Edge& e : edges) {
    if (e.apex)
      out += "edge $-1 -1 $-1 " + ref(e.vertex) + " 0 " + ref(e.vertex) + " 0 " + ref(e.coedge) +
             " $-1 forward @7 unknown #\n";
    else
      out += "edge $-1 -1 $-1 " + ref(e.vertex) + " " + num(-kPi) + " " + ref(e.vertex) + " " + num(kPi) + " " +
             ref(e.coedge) + " " + ref(e.curve) + " forward @7 unknown #\n";
    if (!e.apex) out += e.curveText + "\n";
    out += "vertex $-1 -1 $-1 " + ref(e.index) + " " + ref(e.point) + " #\n";
    out += "point $-1 -1 $-1 " + pnt(e.at) + " #\n";
  }
  out += "End-of-ACIS-data\n";
  text = std::move(out);
  return true;
}

}  // namespace host::brep
