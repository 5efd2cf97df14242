#pragma once
// An axis-aligned 3D box. An empty box has its minimum at +1e20 and its
// maximum at -1e20; an empty flat box keeps z at 0 in both corners.
#include "host/db/object_id.h"
#include "host/ge/vectors.h"

class AcDbExtents;

class CVKRect {
 public:
  explicit CVKRect(bool bFlat = true);
  CVKRect(double minX, double minY, double maxX, double maxY);
  CVKRect(const AcGePoint3d& p1, const AcGePoint3d& p2, bool bFlat);
  explicit CVKRect(const AcDbExtents& extents);
  // The geometric extents of an entity; an entity that does not open leaves
  // the box empty (flat).
  explicit CVKRect(AcDbObjectId id);
  CVKRect(const CVKRect&) = default;
  CVKRect& operator=(const CVKRect&) = default;
  virtual ~CVKRect() = default;

  void Extend(const AcGePoint3d& pt);
  // Ignored unless max ≥ min in x and y and all four values lie strictly
  // within (-1e10, 1e10).
  void Extend(const AcDbExtents& extents);
  bool IsFlat() const;
  void MakeFlat();
  AcDbExtents ToExtents() const;
  // Fills from an entity's extents; false for a null id or one that does not open.
  bool SetFromEntity(AcDbObjectId id);

  // Valid: max ≥ min in x and y, every x and y strictly within ±1e10.
  bool IsValid() const;
  double Width() const { return m_ptMax.x - m_ptMin.x; }
  double Height() const { return m_ptMax.y - m_ptMin.y; }
  // The box moved by v (both corners).
  CVKRect Translated(const AcGeVector3d& v) const;
  // Grown by margin on every side in x and y (z too when not flat).
  CVKRect Inflated(double margin) const;

  // Grows the x and y ranges by g on each side; a negative g shrinks a
  // range at most to zero width about its middle.
  void Grow(double g);

  // Point inside within 1e-6.
  bool Contains(const AcGePoint3d& pt) const;
  // Open-interval overlap with other grown by 1e-6, in x and y (and z when
  // this box is not flat); invalid boxes never overlap.
  bool Overlaps(const CVKRect& other) const;
  // Both corners of other inside this box grown by 1e-6, with a further
  // 1e-6 allowance; invalid boxes contain nothing.
  bool ContainsRect(const CVKRect& other) const;
  // Moves the side nearest to pt (left, right, bottom, top; the first on a
  // tie) onto it, for a point inside the box.
  void Snap(const AcGePoint3d& pt);

  AcGePoint3d m_ptMin;
  AcGePoint3d m_ptMax;
};
