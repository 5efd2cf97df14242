#pragma once
// The geometry of one space of a drawing (model space or a layout), ready
// to paint: every entity becomes world-space strokes, fills and texts in
// its resolved colour, with linetype dashes applied; block references,
// dimensions and hatches are drawn through what they are made of. A grid
// of tiles finds what lies in a view, so painting and picking touch only
// what is on screen. Entities changed in the database are rebuilt one by one.
#include <QtCore/QHash>
#include <QtCore/QRectF>
#include <QtGui/QColor>
#include <QtGui/QPolygonF>

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/db/object_id.h"

class AcDbDatabase;
class AcDbEntity;
class QPainter;

namespace gui {

struct TextItem {
  QPointF position;    // baseline start, world
  double height = 1;   // world
  double rotation = 0; // radians
  double widthFactor = 1;
  QString text;
  int hAlign = 0;      // 0 left, 1 centre, 2 right
  int vAlign = 0;      // 0 baseline, 1 bottom, 2 middle, 3 top
};

class DrawingScene {
 public:
  // Builds the geometry of the space (a block table record id; model space
  // when null).
  void Build(const AcDbDatabase* db, AcDbObjectId space = AcDbObjectId::kNull);
  // Rebuilds one top-level entity (after it was added, changed or erased).
  void Refresh(AcDbObjectId entity);
  // Re-reads which entities are highlighted.
  void RefreshHighlights();
  AcDbObjectId Space() const { return m_space; }
  const AcDbDatabase* Database() const { return m_db; }

  // Extents of everything drawn; empty when nothing is.
  QRectF Extents() const;
  std::size_t EntityCount() const { return m_live; }

  // Paints what lies in visible (world) with worldToScreen; pixel is the
  // size of one screen pixel in world units (for leaving out what is too
  // small to see). Highlighted entities are drawn dashed over the rest.
  void Paint(QPainter& painter, const QTransform& worldToScreen, const QRectF& visible, double pixel) const;

  // About how many entities lie in the rectangle (counted by tiles, so
  // an entity over several tiles counts more than once).
  std::size_t EstimateIn(const QRectF& rect) const;
  // Grows with every change of the geometry or the highlights.
  unsigned Generation() const { return m_generation; }

  // The top-level entity whose strokes pass nearest to point within tol
  // (world units); null when none.
  AcDbObjectId Pick(const QPointF& point, double tol) const;
  // Entities wholly inside the rectangle (window) or inside or crossing it.
  std::vector<AcDbObjectId> Select(const QRectF& rect, bool crossing) const;
  // Strokes of the entities near point (for object snaps).
  std::vector<QPolygonF> StrokesNear(const QPointF& point, double tol) const;

 private:
  struct Stroke {
    std::uint32_t first = 0, count = 0;  // into m_points
    QRgb colour = 0;
    bool fill = false;
  };
  struct Entity {
    AcDbObjectId id;
    QRectF box;
    std::uint32_t firstStroke = 0, strokeCount = 0;
    std::uint32_t firstText = 0, textCount = 0;
    QRgb textColour = 0;
    bool live = false, highlighted = false;
  };
  class Builder;

  void Add(AcDbObjectId id);
  void Index(std::uint32_t entity);
  std::vector<std::uint32_t> EntitiesIn(const QRectF& rect) const;
  int TileX(double x) const;
  int TileY(double y) const;

  const AcDbDatabase* m_db = nullptr;
  AcDbObjectId m_space;
  std::vector<QPointF> m_points;
  std::vector<Stroke> m_strokes;
  std::vector<TextItem> m_texts;
  std::vector<QRgb> m_textColours;
  QHash<QString, double> m_textAdvance;  // width of a text per unit of height
  std::vector<Entity> m_entities;
  std::unordered_map<AcDbObjectId, std::uint32_t> m_byId;  // → entity index
  std::size_t m_live = 0;
  // Tiles over the extents at build time; entities beyond them go to the
  // overflow list.
  QRectF m_gridBox;
  int m_cols = 0, m_rows = 0;
  std::vector<std::vector<std::uint32_t>> m_tiles;
  std::vector<std::uint32_t> m_overflow;
  mutable std::vector<std::uint32_t> m_stamp;
  mutable std::uint32_t m_pass = 0;
  unsigned m_generation = 0;
};

}  // namespace gui
