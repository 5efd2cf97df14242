#include "app/gui/view/drawing_view.h"

#include <QtGui/QKeyEvent>
#include <QtGui/QMouseEvent>
#include <QtGui/QPainter>
#include <QtGui/QWheelEvent>

#include <cmath>

namespace gui {

namespace {
constexpr double kAperture = 10;   // snap and pick distance, pixels
constexpr double kDragStart = 4;   // pixels before a press becomes a window
const QColor kBackground(33, 40, 48);

double turn(const QPointF& a, const QPointF& b, const QPointF& c) {
  const double a1 = std::atan2(b.y() - a.y(), b.x() - a.x()), a2 = std::atan2(c.y() - b.y(), c.x() - b.x());
  double d = std::fabs(a2 - a1);
  return d > M_PI ? 2 * M_PI - d : d;
}

std::optional<QPointF> intersection(const QPointF& a, const QPointF& b, const QPointF& c, const QPointF& d) {
  const double rx = b.x() - a.x(), ry = b.y() - a.y(), sx = d.x() - c.x(), sy = d.y() - c.y();
  const double den = rx * sy - ry * sx;
  if (std::fabs(den) < 1e-12 * (std::hypot(rx, ry) * std::hypot(sx, sy) + 1e-300)) return std::nullopt;
  const double t = ((c.x() - a.x()) * sy - (c.y() - a.y()) * sx) / den;
  const double u = ((c.x() - a.x()) * ry - (c.y() - a.y()) * rx) / den;
  if (t < -1e-9 || t > 1 + 1e-9 || u < -1e-9 || u > 1 + 1e-9) return std::nullopt;
  return QPointF(a.x() + t * rx, a.y() + t * ry);
}

QPointF closestOnSegment(const QPointF& p, const QPointF& a, const QPointF& b) {
  const double dx = b.x() - a.x(), dy = b.y() - a.y(), len2 = dx * dx + dy * dy;
  const double t = len2 > 0 ? std::clamp(((p.x() - a.x()) * dx + (p.y() - a.y()) * dy) / len2, 0.0, 1.0) : 0;
  return {a.x() + t * dx, a.y() + t * dy};
}

// The centre of a stroke that runs along a circle, if it does.
std::optional<QPointF> circleCentre(const QPolygonF& s) {
  if (s.size() < 5) return std::nullopt;
  const QPointF a = s.front(), b = s[s.size() / 2], c = s[s.size() - 2];
  const double d = 2 * (a.x() * (b.y() - c.y()) + b.x() * (c.y() - a.y()) + c.x() * (a.y() - b.y()));
  if (std::fabs(d) < 1e-12) return std::nullopt;
  const double a2 = a.x() * a.x() + a.y() * a.y(), b2 = b.x() * b.x() + b.y() * b.y(), c2 = c.x() * c.x() + c.y() * c.y();
  const QPointF o((a2 * (b.y() - c.y()) + b2 * (c.y() - a.y()) + c2 * (a.y() - b.y())) / d,
                  (a2 * (c.x() - b.x()) + b2 * (a.x() - c.x()) + c2 * (b.x() - a.x())) / d);
  const double r = std::hypot(a.x() - o.x(), a.y() - o.y());
  for (const QPointF& p : s)
    if (std::fabs(std::hypot(p.x() - o.x(), p.y() - o.y()) - r) > 1e-6 * std::max(1.0, r)) return std::nullopt;
  return o;
}
}  // namespace

DrawingView::DrawingView(QWidget* parent) : QWidget(parent) {
  setMouseTracking(true);
  setFocusPolicy(Qt::StrongFocus);
  setCursor(Qt::BlankCursor);  // the crosshair is drawn
  setAttribute(Qt::WA_OpaquePaintEvent);
  setMinimumSize(200, 150);
}

void DrawingView::SetDrawing(const AcDbDatabase* db, AcDbObjectId space) {
  m_scene.Build(db, space);
  m_fitPending = true;
  ZoomExtents();
}

QTransform DrawingView::WorldToScreen() const {
  // y up in the drawing, down on screen.
  return QTransform(m_scale, 0, 0, -m_scale, width() / 2.0 - m_centre.x() * m_scale,
                    height() / 2.0 + m_centre.y() * m_scale);
}

QPointF DrawingView::ToWorld(const QPointF& s) const {
  return {m_centre.x() + (s.x() - width() / 2.0) / m_scale, m_centre.y() - (s.y() - height() / 2.0) / m_scale};
}
QPointF DrawingView::ToScreen(const QPointF& w) const { return WorldToScreen().map(w); }

QRectF DrawingView::VisibleWorld() const {
  return QRectF(ToWorld(QPointF(0, height())), ToWorld(QPointF(width(), 0))).normalized();
}

void DrawingView::ZoomWindow(const QRectF& world) {
  m_fitPending = false;
  Fit(world);
}

void DrawingView::Fit(const QRectF& world) {
  if (world.isNull() || !std::isfinite(world.width()) || !std::isfinite(world.height())) return;
  m_centre = world.center();
  const double w = std::max(world.width(), 1e-9), h = std::max(world.height(), 1e-9);
  m_scale = std::min(width() / w, height() / h);
  Redraw();
}

void DrawingView::ZoomExtents() {
  QRectF r = m_scene.Extents();
  if (r.isNull()) r = QRectF(0, 0, 100, 100);
  const double m = std::max(r.width(), r.height()) * 0.03;
  Fit(r.adjusted(-m, -m, m, m));
}

void DrawingView::ZoomAbout(const QPointF& screen, double factor) {
  m_fitPending = false;
  const QPointF before = ToWorld(screen);
  m_scale = std::clamp(m_scale * factor, 1e-9, 1e9);
  const QPointF after = ToWorld(screen);
  m_centre += before - after;
  Redraw();
}

void DrawingView::Redraw() {
  m_cacheValid = false;
  update();
}

void DrawingView::SetMode(Mode mode) {
  m_mode = mode;
  m_dragFrom.reset();
  m_snap.reset();
  update();
}

void DrawingView::RenderCache() {
  QElapsedTimer timer;
  timer.start();
  const qreal dpr = devicePixelRatioF();
  if (m_cache.size() != size() * dpr) m_cache = QPixmap(size() * dpr);
  m_cache.setDevicePixelRatio(dpr);
  m_cache.fill(kBackground);
  QPainter p(&m_cache);
  const QRectF visible = VisibleWorld();
  if (m_scene.EstimateIn(visible) > kVectorLimit) PaintOverview(p);
  else m_scene.Paint(p, WorldToScreen(), visible, 1 / m_scale);
  m_cacheValid = true;
  m_lastRenderMs = static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

void DrawingView::PaintOverview(QPainter& p) {
  const QRectF extents = m_scene.Extents();
  if (m_overview.isNull() || m_overviewGeneration != m_scene.Generation() || m_overviewWorld != extents) {
    const double side = 4096, scale = side / std::max(extents.width(), extents.height());
    m_overviewWorld = extents;
    m_overview = QImage(std::max(1, static_cast<int>(extents.width() * scale)),
                        std::max(1, static_cast<int>(extents.height() * scale)), QImage::Format_ARGB32_Premultiplied);
    m_overview.fill(Qt::transparent);
    QPainter o(&m_overview);
    const QTransform t(scale, 0, 0, -scale, -extents.left() * scale, extents.bottom() * scale);
    m_scene.Paint(o, t, extents, 1 / scale);
    m_overviewGeneration = m_scene.Generation();
  }
  const QRectF target(ToScreen(m_overviewWorld.bottomLeft()), ToScreen(m_overviewWorld.topRight()));
  p.setRenderHint(QPainter::SmoothPixmapTransform, true);
  p.drawImage(target.normalized(), m_overview);
}

void DrawingView::paintEvent(QPaintEvent*) {
  if (!m_cacheValid) RenderCache();
  QPainter p(this);
  p.drawPixmap(0, 0, m_cache);
  if (m_dragFrom && m_cursor) {
    const bool crossing = m_cursor->x() < m_dragFrom->x();
    const QRectF r = QRectF(*m_dragFrom, *m_cursor).normalized();
    p.setPen(QPen(crossing ? QColor(80, 220, 120) : QColor(90, 150, 255), 1, crossing ? Qt::DashLine : Qt::SolidLine));
    p.setBrush(crossing ? QColor(80, 220, 120, 40) : QColor(90, 150, 255, 40));
    p.drawRect(r);
  }
  if (!m_cursor) return;
  const QPointF c = *m_cursor;
  p.setPen(QPen(QColor(230, 230, 230), 1));
  p.drawLine(QPointF(0, c.y()), QPointF(width(), c.y()));
  p.drawLine(QPointF(c.x(), 0), QPointF(c.x(), height()));
  p.setBrush(Qt::NoBrush);
  if (m_mode != Mode::kPickPoint) p.drawRect(QRectF(c.x() - 4, c.y() - 4, 8, 8));  // pick box
  if (m_snap) {
    const QPointF s = ToScreen(m_snap->point);
    p.setPen(QPen(QColor(255, 200, 0), 2));
    const double r = 6;
    switch (m_snap->kind) {
      case Snap::kEndpoint: p.drawRect(QRectF(s.x() - r, s.y() - r, 2 * r, 2 * r)); break;
      case Snap::kMidpoint:
        p.drawPolygon(QPolygonF({QPointF(s.x(), s.y() - r), QPointF(s.x() + r, s.y() + r), QPointF(s.x() - r, s.y() + r)}));
        break;
      case Snap::kCentre: p.drawEllipse(s, r, r); break;
      case Snap::kIntersection:
        p.drawLine(s + QPointF(-r, -r), s + QPointF(r, r));
        p.drawLine(s + QPointF(-r, r), s + QPointF(r, -r));
        break;
      case Snap::kNearest:
        p.drawPolygon(QPolygonF({s + QPointF(-r, -r), s + QPointF(r, -r), s + QPointF(-r, r), s + QPointF(r, r)}));
        break;
    }
  }
}

void DrawingView::resizeEvent(QResizeEvent*) {
  m_cacheValid = false;
  if (m_fitPending) ZoomExtents();
}

void DrawingView::wheelEvent(QWheelEvent* e) {
  const double steps = e->angleDelta().y() / 120.0;
  if (steps != 0) ZoomAbout(e->position(), std::pow(1.25, steps));
  e->accept();
}

std::optional<Snap> DrawingView::SnapAt(const QPointF& screen) const {
  const QPointF w = ToWorld(screen);
  const double tol = kAperture / m_scale;
  const std::vector<QPolygonF> strokes = m_scene.StrokesNear(w, tol);
  std::optional<Snap> best;
  double bestD = tol;
  auto consider = [&](Snap::Kind kind, const QPointF& p) {
    const double d = std::hypot(p.x() - w.x(), p.y() - w.y());
    if (d <= bestD) best = Snap{kind, p}, bestD = d;
  };
  for (const QPolygonF& s : strokes) {
    consider(Snap::kEndpoint, s.front());
    consider(Snap::kEndpoint, s.back());
    // Corners of polylines are endpoints; the sample points of curves are not.
    int runStart = 0;
    for (int i = 1; i + 1 < s.size(); ++i)
      if (turn(s[i - 1], s[i], s[i + 1]) > 0.35) {
        consider(Snap::kEndpoint, s[i]);
        if (i - runStart == 1) consider(Snap::kMidpoint, (s[runStart] + s[i]) / 2);
        runStart = i;
      }
    if (s.size() - 1 - runStart == 1) consider(Snap::kMidpoint, (s[runStart] + s.back()) / 2);
    if (const auto o = circleCentre(s)) {
      consider(Snap::kCentre, *o);
      // The middle of the arc by length.
      double total = 0;
      for (int i = 1; i < s.size(); ++i) total += std::hypot(s[i].x() - s[i - 1].x(), s[i].y() - s[i - 1].y());
      double run = 0;
      for (int i = 1; i < s.size(); ++i) {
        const double seg = std::hypot(s[i].x() - s[i - 1].x(), s[i].y() - s[i - 1].y());
        if (run + seg >= total / 2 && seg > 0) {
          consider(Snap::kMidpoint, s[i - 1] + (s[i] - s[i - 1]) * ((total / 2 - run) / seg));
          break;
        }
        run += seg;
      }
    }
  }
  for (std::size_t a = 0; a < strokes.size(); ++a)
    for (std::size_t b = a + 1; b < strokes.size(); ++b)
      for (int i = 1; i < strokes[a].size(); ++i)
        for (int j = 1; j < strokes[b].size(); ++j)
          if (const auto x = intersection(strokes[a][i - 1], strokes[a][i], strokes[b][j - 1], strokes[b][j]))
            consider(Snap::kIntersection, *x);
  if (best) return best;
  for (const QPolygonF& s : strokes)
    for (int i = 1; i < s.size(); ++i) {
      const QPointF c = closestOnSegment(w, s[i - 1], s[i]);
      const double d = std::hypot(c.x() - w.x(), c.y() - w.y());
      if (d <= bestD) best = Snap{Snap::kNearest, c}, bestD = d;
    }
  return best;
}

void DrawingView::mousePressEvent(QMouseEvent* e) {
  setFocus();
  if (e->button() == Qt::MiddleButton) {
    m_panFrom = e->position();
    return;
  }
  if (e->button() == Qt::RightButton) {
    if (m_mode != Mode::kIdle) Q_EMIT PickFinished();
    return;
  }
  if (e->button() != Qt::LeftButton) return;
  if (m_mode == Mode::kPickPoint) {
    const auto snap = SnapAt(e->position());
    Q_EMIT PointPicked(snap ? snap->point : ToWorld(e->position()));
    return;
  }
  if (m_mode == Mode::kPickEntities) {
    if (m_dragFrom) {  // second corner of a window started by a click
      const bool crossing = e->position().x() < m_dragFrom->x();
      const QRectF r = QRectF(ToWorld(*m_dragFrom), ToWorld(e->position())).normalized();
      m_dragFrom.reset();
      update();
      Q_EMIT WindowPicked(r, crossing);
      return;
    }
    const AcDbObjectId hit = m_scene.Pick(ToWorld(e->position()), kAperture / 2 / m_scale);
    if (!hit.isNull()) Q_EMIT EntityPicked(hit);
    else m_dragFrom = e->position();  // a click on nothing starts a window
  }
}

void DrawingView::mouseMoveEvent(QMouseEvent* e) {
  const QPointF pos = e->position();
  if (m_panFrom) {
    m_fitPending = false;
    const QPointF d = pos - *m_panFrom;
    m_centre -= QPointF(d.x() / m_scale, -d.y() / m_scale);
    m_panFrom = pos;
    m_cursor = pos;
    Redraw();
    return;
  }
  m_cursor = pos;
  if (m_mode == Mode::kPickPoint) m_snap = SnapAt(pos);
  Q_EMIT CursorMoved(m_snap ? m_snap->point : ToWorld(pos));
  update();
}

void DrawingView::mouseReleaseEvent(QMouseEvent* e) {
  if (e->button() == Qt::MiddleButton) {
    m_panFrom.reset();
    return;
  }
  if (e->button() == Qt::LeftButton && m_mode == Mode::kPickEntities && m_dragFrom) {
    const QPointF d = e->position() - *m_dragFrom;
    if (std::hypot(d.x(), d.y()) < kDragStart) return;  // a click: the window ends at the next click
    const bool crossing = e->position().x() < m_dragFrom->x();
    const QRectF r = QRectF(ToWorld(*m_dragFrom), ToWorld(e->position())).normalized();
    m_dragFrom.reset();
    update();
    Q_EMIT WindowPicked(r, crossing);
  }
}

void DrawingView::keyPressEvent(QKeyEvent* e) {
  if (e->key() == Qt::Key_Escape) {
    m_dragFrom.reset();
    update();
    if (m_mode != Mode::kIdle) Q_EMIT PickCancelled();
    return;
  }
  if ((e->key() == Qt::Key_Return || e->key() == Qt::Key_Enter || e->key() == Qt::Key_Space) && m_mode != Mode::kIdle) {
    Q_EMIT PickFinished();
    return;
  }
  QWidget::keyPressEvent(e);
}

void DrawingView::leaveEvent(QEvent*) {
  m_cursor.reset();
  m_snap.reset();
  update();
}

}  // namespace gui
