#pragma once
// The drawing on screen: one space of a drawing, zoomed and panned like a
// drafting program (wheel zooms about the cursor, the middle button pans),
// a crosshair cursor, and the two kinds of input a command asks for:
// picking entities (click, window left to right, crossing right to left)
// and points (with object snaps and a marker). Enter or a right click ends
// a pick, Esc cancels.
#include <QtCore/QElapsedTimer>
#include <QtGui/QPixmap>
#include <QtWidgets/QWidget>

#include <optional>
#include <vector>

#include "app/gui/view/drawing_scene.h"
#include "host/db/object_id.h"

namespace gui {

// An object snap under the cursor.
struct Snap {
  enum Kind { kEndpoint, kMidpoint, kCentre, kIntersection, kNearest };
  Kind kind = kNearest;
  QPointF point;
};

class DrawingView : public QWidget {
  Q_OBJECT
 public:
  enum class Mode { kIdle, kPickEntities, kPickPoint };

  explicit DrawingView(QWidget* parent = nullptr);

  // Shows a space of a drawing (model space when null) and zooms to its extents.
  void SetDrawing(const AcDbDatabase* db, AcDbObjectId space = AcDbObjectId::kNull);
  DrawingScene& Scene() { return m_scene; }
  const DrawingScene& Scene() const { return m_scene; }

  void ZoomExtents();
  // Shows the window (world) whole, centred.
  void ZoomWindow(const QRectF& world);
  // Zooms by factor about a screen point.
  void ZoomAbout(const QPointF& screen, double factor);
  QRectF VisibleWorld() const;
  QPointF ToWorld(const QPointF& screen) const;
  QPointF ToScreen(const QPointF& world) const;

  // Entities or geometry changed: repaint (after Scene().Refresh(...)).
  void Redraw();

  void SetMode(Mode mode);
  Mode CurrentMode() const { return m_mode; }
  // The snap the cursor would take at a screen point, if any.
  std::optional<Snap> SnapAt(const QPointF& screen) const;

  // Time the last full paint of the drawing took, in milliseconds.
  double LastRenderMs() const { return m_lastRenderMs; }

 Q_SIGNALS:
  void CursorMoved(QPointF world);
  void EntityPicked(AcDbObjectId id);
  void WindowPicked(QRectF world, bool crossing);
  void PointPicked(QPointF world);
  void PickFinished();   // Enter or right click
  void PickCancelled();  // Esc

 protected:
  void paintEvent(QPaintEvent*) override;
  void resizeEvent(QResizeEvent*) override;
  void wheelEvent(QWheelEvent*) override;
  void mousePressEvent(QMouseEvent*) override;
  void mouseMoveEvent(QMouseEvent*) override;
  void mouseReleaseEvent(QMouseEvent*) override;
  void keyPressEvent(QKeyEvent*) override;
  void leaveEvent(QEvent*) override;

 private:
  QTransform WorldToScreen() const;
  void Fit(const QRectF& world);
  bool m_fitPending = false;  // extents again once the widget has its size
  void RenderCache();

  DrawingScene m_scene;
  QPointF m_centre;     // world point at the middle of the widget
  double m_scale = 1;   // pixels per world unit
  // Beyond this many entities in view the drawing is shown from an image of
  // the whole of it, made once (and again after changes) at a resolution
  // finer than the screen needs at that scale.
  static constexpr std::size_t kVectorLimit = 60000;
  void PaintOverview(QPainter& p);
  QImage m_overview;
  QRectF m_overviewWorld;
  unsigned m_overviewGeneration = ~0u;
  QPixmap m_cache;
  bool m_cacheValid = false;
  double m_lastRenderMs = 0;
  Mode m_mode = Mode::kIdle;
  std::optional<QPointF> m_cursor;  // screen
  std::optional<QPointF> m_panFrom, m_dragFrom;
  std::optional<Snap> m_snap;
};

}  // namespace gui
