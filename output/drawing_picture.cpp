#include "output/drawing_picture.h"

#include <QtCore/QBuffer>
#include <QtGui/QFont>
#include <QtGui/QGuiApplication>
#include <QtGui/QImage>
#include <QtGui/QPainter>
#include <QtGui/QPainterPath>
#include <QtSvg/QSvgGenerator>

#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <string>
#include <memory>
#include <numbers>

#include "host/base/safe_write.h"
#include "host/db/operations.h"
#include "host/dxf/tags.h"

namespace {
constexpr double kPi = std::numbers::pi;

// Text needs a GUI application (for fonts); outside one, an offscreen one
// is made for the life of the process.
void ensureGuiApplication() {
  if (QCoreApplication::instance()) return;
  qputenv("QT_QPA_PLATFORM", "offscreen");
  // Without a runtime folder the toolkit warns on standard error; give it
  // the private one it would fall back to, made as it wants it (mode 0700).
  if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR")) {
    const std::string dir = "/tmp/runtime-" + std::to_string(::getuid());
    ::mkdir(dir.c_str(), 0700);
    struct stat st {};
    if (::stat(dir.c_str(), &st) == 0 && st.st_uid == ::getuid() && (st.st_mode & 0777) == 0700)
      qputenv("XDG_RUNTIME_DIR", QByteArray::fromStdString(dir));
  }
  static int argc = 1;
  static char name[] = "envline";
  static char* argv[] = {name, nullptr};
  static QGuiApplication app(argc, argv);
}

// World (drawing units, y up) to picture (pixels, y down).
struct View {
  double x0, y0, scale;
  int height;
  QPointF map(double x, double y) const { return {(x - x0) * scale, height - (y - y0) * scale}; }
  QPointF map(const AcGePoint3d& p) const { return map(p.x, p.y); }
};

class Painter {
 public:
  Painter(QPainter& p, const View& v) : m_p(p), m_v(v) {}

  void entity(const AcDbEntity* e, int depth) {
    if (!e || e->visibility() == AcDb::kInvisible || depth > 8) return;
    if (const auto* l = AcDbLine::cast(e)) {
      m_p.drawLine(m_v.map(l->startPoint()), m_v.map(l->endPoint()));
    } else if (const auto* c = AcDbCurve::cast(e); c && !AcDbPolyline::cast(e) && !AcDb2dPolyline::cast(e) &&
                                                       !AcDb3dPolyline::cast(e)) {
      curve(*c);
    } else if (const auto* t = AcDbText::cast(e)) {
      text(t->textString(), t->position(), t->height(), t->rotation());
    } else if (const auto* m = AcDbMText::cast(e)) {
      std::string plain;
      for (std::size_t i = 0; i < m->contents().size(); ++i) {
        const char ch = m->contents()[i];
        if (ch == '\\' && i + 1 < m->contents().size() && m->contents()[i + 1] == 'P') {
          plain += ' ';
          ++i;
        } else if (ch != '{' && ch != '}') {
          plain += ch;
        }
      }
      text(plain, m->location() - AcGeVector3d(0, m->textHeight(), 0), m->textHeight(), 0);
    } else if (const auto* h = AcDbHatch::cast(e)) {
      hatch(*h);
    } else {
      // Polylines, references and dimensions: draw what they are made of.
      AcDbEntityArray pieces;
      if (e->explode(pieces) == Acad::eOk)
        for (AcDbEntity* piece : pieces) {
          entity(piece, depth + 1);
          delete piece;
        }
    }
  }

 private:
  void curve(const AcDbCurve& c) {
    const auto g = c.geCurve();
    if (!g) return;
    const double length = g->length();
    const int n = std::clamp(static_cast<int>(length * m_v.scale / 3), 8, 720);
    AcGePoint3dArray pts;
    g->getSamplePoints(n, pts);
    QPainterPath path(m_v.map(pts[0]));
    for (int i = 1; i < pts.length(); ++i) path.lineTo(m_v.map(pts[i]));
    m_p.drawPath(path);
  }
  void text(const std::string& s, const AcGePoint3d& at, double height, double rotation) {
    const double px = height * m_v.scale;
    if (px < 3) return;  // too small to read
    QFont font("WenQuanYi Micro Hei");
    font.setPixelSize(std::max(1, static_cast<int>(px)));
    m_p.save();
    m_p.setFont(font);
    m_p.translate(m_v.map(at));
    m_p.rotate(-rotation * 180 / kPi);
    m_p.drawText(QPointF(0, 0), QString::fromUtf8(s.data(), static_cast<int>(s.size())));
    m_p.restore();
  }
  void hatch(const AcDbHatch& h) {
    QPainterPath path;
    for (const auto& loop : h.loops()) {
      if (loop.vertices.empty()) continue;
      path.moveTo(m_v.map(loop.vertices[0].point.x, loop.vertices[0].point.y));
      for (std::size_t i = 1; i < loop.vertices.size(); ++i)
        path.lineTo(m_v.map(loop.vertices[i].point.x, loop.vertices[i].point.y));
      path.closeSubpath();
    }
    m_p.save();
    m_p.setBrush(QColor(200, 205, 212, 90));
    m_p.drawPath(path);
    m_p.restore();
  }

  QPainter& m_p;
  const View& m_v;
};

// The length of a scale bar about a fifth of the width: 1, 2 or 5 × 10^k.
double niceLength(double span) {
  const double target = span / 5;
  const double p = std::pow(10.0, std::floor(std::log10(target)));
  for (double f : {5.0, 2.0, 1.0})
    if (f * p <= target) return f * p;
  return p;
}

void paint(QPainter& p, const AcDbDatabase& db, const DrawingPictureOptions& o, const View& v, double spanX) {
  p.setRenderHint(QPainter::Antialiasing);
  p.fillRect(QRectF(0, 0, o.width, v.height), Qt::white);
  Painter painter(p, v);
  p.setPen(QPen(QColor(150, 156, 164), 1.0));
  for (AcDbObjectId id : host::allEntities(&db)) {
    if (id == o.outline) continue;
    AcDbObjectPointer<AcDbEntity> e(id, AcDb::kForRead);
    painter.entity(e.get(), 0);
  }
  if (o.axisY) {
    QPen axis(QColor(28, 126, 214), 1.2);
    axis.setDashPattern({12, 4, 2, 4});
    p.setPen(axis);
    p.drawLine(v.map(v.x0, *o.axisY), v.map(v.x0 + o.width / v.scale, *o.axisY));
  }
  if (o.axisLine) {
    const auto& l = *o.axisLine;
    const double len = std::hypot(l[2], l[3]), reach = 2 * (o.width + v.height) / v.scale;
    if (len > 0) {
      QPen axis(QColor(28, 126, 214), 1.2);
      axis.setDashPattern({12, 4, 2, 4});
      p.setPen(axis);
      p.drawLine(v.map(l[0] - l[2] / len * reach, l[1] - l[3] / len * reach),
                 v.map(l[0] + l[2] / len * reach, l[1] + l[3] / len * reach));
    }
  }
  if (!o.outline.isNull()) {
    AcDbObjectPointer<AcDbPolyline> outline(o.outline, AcDb::kForRead);
    if (outline) {
      p.setPen(QPen(QColor(217, 72, 15), 2.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
      AcDbEntityArray pieces;
      outline->explode(pieces);
      for (AcDbEntity* piece : pieces) {
        painter.entity(piece, 0);
        delete piece;
      }
    }
  }
  // Scale bar, bottom left.
  const double len = niceLength(spanX);
  const QPointF a(20, v.height - 20), b(20 + len * v.scale, v.height - 20);
  p.setPen(QPen(Qt::black, 2));
  p.drawLine(a, b);
  p.drawLine(a, a - QPointF(0, 6));
  p.drawLine(b, b - QPointF(0, 6));
  QFont font("WenQuanYi Micro Hei");
  font.setPixelSize(14);
  p.setFont(font);
  const std::string label = host::dxf::formatDouble(len);
  p.drawText(a + QPointF(0, -10), QString::fromStdString(label.size() > 2 && label.ends_with(".0")
                                                              ? label.substr(0, label.size() - 2)
                                                              : label));
  if (!o.title.empty()) p.drawText(QPointF(20, 24), QString::fromUtf8(o.title.c_str()));
  double line = 44;
  for (const std::string& note : o.notes) {
    p.drawText(QPointF(20, line), QString::fromUtf8(note.c_str()));
    line += 18;
  }
  // Marks: a red ring with its number, and the numbered texts under the notes.
  p.setPen(QPen(QColor(201, 42, 42), 2));
  for (std::size_t i = 0; i < o.marks.size(); ++i) {
    const QPointF at = v.map(o.marks[i].x, o.marks[i].y);
    p.setBrush(Qt::NoBrush);
    p.drawEllipse(at, 12, 12);
    const std::string number = std::to_string(i + 1);
    p.drawText(at + QPointF(14, -10), QString::fromStdString(number));
    p.drawText(QPointF(20, line), QString::fromUtf8((number + ": " + o.marks[i].text).c_str()));
    line += 18;
  }
}
}  // namespace

bool WriteDrawingPicture(const AcDbDatabase& db, const std::string& path, const DrawingPictureOptions& o,
                         std::string& error) {
  ensureGuiApplication();
  double x0, y0, x1, y1;
  if (o.window) {
    std::tie(x0, y0, x1, y1) = std::tuple((*o.window)[0], (*o.window)[1], (*o.window)[2], (*o.window)[3]);
  } else {
    AcDbExtents all;
    for (AcDbObjectId id : host::allEntities(&db)) {
      AcDbObjectPointer<AcDbEntity> e(id, AcDb::kForRead);
      AcDbExtents ext;
      if (e && e->getGeomExtents(ext) == Acad::eOk) all.addExt(ext);
    }
    if (!all.isValid()) all.set({0, 0, 0}, {1, 1, 0});
    x0 = all.minPoint().x, y0 = all.minPoint().y, x1 = all.maxPoint().x, y1 = all.maxPoint().y;
  }
  const double margin = std::max(x1 - x0, y1 - y0) * 0.05 + 1e-9;
  x0 -= margin, y0 -= margin, x1 += margin, y1 += margin;
  const double scale = o.width / (x1 - x0);
  const int height = std::clamp(static_cast<int>((y1 - y0) * scale), 64, 8 * o.width);
  const View view{x0, y0, scale, height};
  const bool svg = path.size() > 4 && host::equalsNoCase(path.substr(path.size() - 4), ".svg");
  if (svg) {
    QBuffer bytes;
    QSvgGenerator gen;
    gen.setOutputDevice(&bytes);
    gen.setSize(QSize(o.width, height));
    gen.setViewBox(QRect(0, 0, o.width, height));
    gen.setTitle(QString::fromUtf8(o.title.c_str()));
    QPainter p;
    if (!p.begin(&gen)) {
      error = path + ": cannot write the picture";
      return false;
    }
    paint(p, db, o, view, x1 - x0);
    p.end();
    return host::writeFileSafely(path, std::string_view(bytes.data().constData(), bytes.data().size()), error);
  }
  QImage image(o.width, height, QImage::Format_ARGB32);
  {
    QPainter p(&image);
    paint(p, db, o, view, x1 - x0);
  }
  QBuffer bytes;
  if (!bytes.open(QIODevice::WriteOnly) || !image.save(&bytes, "PNG")) {
    error = path + ": cannot encode the picture";
    return false;
  }
  return host::writeFileSafely(path, std::string_view(bytes.data().constData(), bytes.data().size()), error);
}
