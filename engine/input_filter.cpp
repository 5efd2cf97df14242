// Cleaning the selection and reducing it to straight lines.
#include <cmath>
#include <memory>

#include "engine/encircle_line.h"
#include "host/db/operations.h"
#include "util/entity_utils.h"

namespace {

// Erases the entity at index i and removes it, stepping the index back so
// that the element moving into its place is examined next.
void drop(AcArray<AcDbObjectId>& ids, int& i) {
  util::EraseEntity(ids[i]);
  ids.removeAt(i);
  --i;
}

template <class T>
bool isKind(AcDbObjectId id) {
  AcDbObjectPointer<AcDbEntity> ent(id, AcDb::kForRead);
  return ent && ent->isKindOf(T::desc());
}

}  // namespace

void CEncircleLine::RemoveIdsInLayer(AcArray<AcDbObjectId>& ids, std::vector<CString> layers) {
  for (int i = 0; i < ids.length(); ++i) {
    AcDbObjectPointer<AcDbEntity> ent(ids[i], AcDb::kForRead);
    if (!ent) continue;
    const CString layer = ent->layer();
    ent.close();
    for (const CString& name : layers)
      if (layer == name) {
        drop(ids, i);
        break;
      }
  }
}

void CEncircleLine::RemoveDashedIds(AcArray<AcDbObjectId>& ids) {
  if (!m_info.m_bRemoveDashed) return;
  for (int i = 0; i < ids.length(); ++i) {
    AcDbObjectPointer<AcDbLine> line(ids[i], AcDb::kForRead);
    if (!line) continue;
    // The line's own linetype: a line "ByLayer" is kept, whatever its layer's.
    const CString name = line->linetype();
    line.close();
    for (const char* form : {"DASH", "dash", "CENTER", "Center"})
      if (name.find(form) != CString::npos) {
        drop(ids, i);
        break;
      }
  }
}

void CEncircleLine::RemoveDimLineIds(AcArray<AcDbObjectId>& ids) {
  for (int i = 0; i < ids.length(); ++i) {
    AcDbObjectPointer<AcDbEntity> ent(ids[i], AcDb::kForRead);
    if (!ent) continue;
    const bool onDimensionLayer = ent->layer() == kDimensionLayer;
    ent.close();
    if (onDimensionLayer) drop(ids, i);
  }
}

bool CEncircleLine::GetMidLineAxisValue(double& dAxis) {
  if (m_info.m_idMidLine.isNull()) return false;
  AcDbObjectPointer<AcDbLine> line(m_info.m_idMidLine, AcDb::kForRead);
  if (!line) return false;
  const AcGePoint3d s = line->startPoint(), e = line->endPoint();
  const double t = m_info.m_tolLine.equalPoint();
  // Horizontal is tested first: a line shorter than t both ways counts as horizontal.
  if (t >= std::fabs(s.y - e.y)) {
    dAxis = s.y;
    return true;
  }
  if (t >= std::fabs(s.x - e.x)) {
    dAxis = s.x;
    return true;
  }
  return false;
}

void CEncircleLine::SetLayersShow(bool bShow) {
  AcDbDatabase* db = acdbHostApplicationServices()->workingDatabase();
  if (!db) return;
  std::vector<CString> names;
  {
    AcDbObjectPointer<AcDbLayerTable> table(db->layerTableId(), AcDb::kForRead);
    if (!table) return;
    for (AcDbObjectId id : table->recordIds()) {
      if (id.isErased()) continue;
      AcDbObjectPointer<AcDbLayerTableRecord> rec(id, AcDb::kForRead);
      if (rec) names.push_back(rec->getName());
    }
  }
  for (const CString& name : names) {
    AcDbObjectId id;
    if (host::findLayer(db, name, id) != Acad::eOk) continue;
    AcDbObjectPointer<AcDbLayerTableRecord> rec(id, AcDb::kForWrite);
    if (rec) rec->setIsOff(!bShow);
  }
}

void CEncircleLine::ConvertToLines(AcArray<AcDbObjectId> ids, AcArray<AcDbObjectId>& lineIds) {
  const double p = m_info.m_dStep;
  AcArray<AcDbObjectId> polylines, working;
  // 1. Sorting: polylines aside, block references exploded level by level
  // (their pieces join the walk), everything else to the working list.
  for (int i = 0; i < ids.length(); ++i) {
    AcDbObjectPointer<AcDbEntity> ent(ids[i], AcDb::kForRead);
    const bool polyline = ent && (ent->isKindOf(AcDbPolyline::desc()) || ent->isKindOf(AcDb2dPolyline::desc()) ||
                                  ent->isKindOf(AcDb3dPolyline::desc()));
    const bool reference = ent && ent->isKindOf(AcDbBlockReference::desc());
    ent.close();
    if (polyline) {
      polylines.append(ids[i]);
    } else if (reference) {
      AcArray<AcDbObjectId> pieces;
      util::ExplodeEntity(ids[i], pieces, true);
      ids.append(pieces);
    } else {
      working.append(ids[i]);
    }
  }
  // 2. Pruning: what is no curve, and full circles and ellipses, cannot be
  // outline; they are erased in order and the others keep theirs.
  {
    AcArray<AcDbObjectId> curves(0, working.length());
    for (AcDbObjectId id : working) {
      AcDbObjectPointer<AcDbEntity> ent(id, AcDb::kForRead);
      const bool keep = ent && ent->isKindOf(AcDbCurve::desc()) && !ent->isKindOf(AcDbCircle::desc()) &&
                        !ent->isKindOf(AcDbEllipse::desc());
      ent.close();
      if (keep) curves.append(id);
      else util::EraseEntity(id);
    }
    working = curves;
  }
  // 3. Duplicate polylines: all four corners of the box within 2p of a kept one.
  std::vector<CVKRect> kept;
  for (int i = 0; i < polylines.length(); ++i) {
    const CVKRect r(polylines[i]);
    bool duplicate = false;
    for (const CVKRect& k : kept) {
      const AcGePoint3d rLL = r.m_ptMin, rUR = r.m_ptMax, kLL = k.m_ptMin, kUR = k.m_ptMax;
      const AcGePoint3d rUL(rLL.x, rUR.y, 0), rLR(rUR.x, rLL.y, 0), kUL(kLL.x, kUR.y, 0), kLR(kUR.x, kLL.y, 0);
      if (rLL.distanceTo(kLL) < 2 * p && rUL.distanceTo(kUL) < 2 * p && rLR.distanceTo(kLR) < 2 * p &&
          rUR.distanceTo(kUR) < 2 * p) {
        duplicate = true;
        break;
      }
    }
    if (duplicate) drop(polylines, i);
    else kept.push_back(r);
  }
  // 4. The remaining polylines become lines and arcs.
  for (AcDbObjectId id : polylines) {
    AcArray<AcDbObjectId> pieces;
    util::ExplodeEntity(id, pieces, true);
    working.append(pieces);
  }
  // 5. Arcs and splines become chords; the curves stay in the drawing and
  // are remembered for restoring arcs in the outline. The rest keep their
  // order, and the chords (lines, or null ids where a chord is too short)
  // follow in the order of their curves.
  AcArray<AcDbObjectId> rest(0, working.length()), chords(0, working.length());
  for (AcDbObjectId id : working) {
    if (!isKind<AcDbSpline>(id) && !isKind<AcDbArc>(id)) {
      rest.append(id);
      continue;
    }
    ConvertCurveToLine(id, chords);
    m_curveIds.append(id);
  }
  rest.append(chords);
  lineIds = rest;
}

void CEncircleLine::ConvertCurveToLine(AcDbObjectId curveId, AcDbObjectId& lineId) {
  lineId = AcDbObjectId::kNull;
  AcDbObjectPointer<AcDbCurve> curve(curveId, AcDb::kForRead);
  if (!curve) return;
  AcGePoint3d s, e;
  if (curve->getStartPoint(s) != Acad::eOk || curve->getEndPoint(e) != Acad::eOk) return;
  curve.close();
  lineId = util::CreateLine(s, e);
}

void CEncircleLine::ConvertCurveToLine(AcDbObjectId curveId, AcArray<AcDbObjectId>& lineIds) {
  const double p = m_info.m_dStep;
  AcDbObjectPointer<AcDbCurve> curve(curveId, AcDb::kForRead);
  if (!curve) return;
  double endParam = 0, length = 0;
  if (curve->getEndParam(endParam) != Acad::eOk || curve->getDistAtParam(endParam, length) != Acad::eOk) return;
  if (2 * p > length) {
    curve.close();
    AcDbObjectId id;
    ConvertCurveToLine(curveId, id);
    lineIds.append(id);
    return;
  }
  const int n = static_cast<int>(std::trunc(length / p)) + 1;
  AcGeCurve3d* geometry = nullptr;
  if (curve->getAcGeCurve(geometry) != Acad::eOk) return;
  const std::unique_ptr<AcGeCurve3d> owned(geometry);
  curve.close();
  AcGePoint3dArray samples;
  owned->getSamplePoints(n, samples);
  for (int i = 0; i + 1 < samples.length(); ++i) lineIds.append(util::CreateLine(samples[i], samples[i + 1]));
}
