#pragma once
// A drawing in a current document, and an engine whose stages tests can call.
#include <gtest/gtest.h>

#include <memory>

#include "engine/encircle_line.h"
#include "host/db/operations.h"
#include "host/ed/document.h"
#include "../host/db/db_helpers.h"

class EngineProbe : public CEncircleLine {
 public:
  explicit EngineProbe(const CEncircleCalInfo& info = CEncircleCalInfo()) : CEncircleLine(info) {}
  using CEncircleLine::AddBreakPoint;
  using CEncircleLine::AddPolyLinePt;
  using CEncircleLine::BreakLines;
  using CEncircleLine::BreakLines2;
  using CEncircleLine::CalBreakPoint;
  using CEncircleLine::ConvertCurveToLine;
  using CEncircleLine::ConvertToLines;
  using CEncircleLine::DeleteCloneEnts;
  using CEncircleLine::DrawPolyLine;
  using CEncircleLine::GetAllArc;
  using CEncircleLine::GetBreakIndex;
  using CEncircleLine::GetLineInfoPt;
  using CEncircleLine::GetMidLineAxisValue;
  using CEncircleLine::IsPointOnArc;
  using CEncircleLine::IsPtExist;
  using CEncircleLine::m_curveIds;
  using CEncircleLine::m_info;
  using CEncircleLine::m_rect;
  using CEncircleLine::RemoveCollinearPoints;
  using CEncircleLine::RemoveDashedIds;
  using CEncircleLine::RemoveDimLineIds;
  using CEncircleLine::RemoveIdsInLayer;
  using CEncircleLine::SetLayersShow;
  using CEncircleLine::SetLineLayerAndType;
  using CEncircleLine::SplitLine;
};

class DrawingTest : public testing::Test {
 protected:
  void SetUp() override { m_doc = acDocManagerPtr()->openDocument(std::make_unique<AcDbDatabase>()); }
  void TearDown() override { acDocManagerPtr()->closeDocument(m_doc); }
  AcDbDatabase* db() const { return m_doc->database(); }

  AcDbObjectId add(AcDbEntity* e, AcDbObjectId block = AcDbObjectId::kNull) {
    AcDbObjectId id;
    EXPECT_EQ(host::appendEntity(db(), e, id, block), Acad::eOk);
    return id;
  }
  AcDbObjectId line(AcGePoint3d a, AcGePoint3d b) { return add(new AcDbLine(a, b)); }
  // The layer (made when missing), drawn in the given linetype when one is named.
  AcDbObjectId layer(const char* name, const char* linetypeName = nullptr) {
    AcDbObjectId id;
    host::findLayer(db(), name, id, true);
    if (linetypeName) {
      AcDbObjectPointer<AcDbLayerTableRecord> rec(id, AcDb::kForWrite);
      rec->setLinetypeObjectId(linetype(linetypeName));
    }
    return id;
  }
  AcDbObjectId linetype(const char* name) { return testdb::Linetype(db(), name); }
  AcDbObjectId block(const char* name) { return testdb::Block(db(), name); }
  // Unerased model space entities of a kind.
  template <class T>
  int count() const {
    int n = 0;
    for (AcDbObjectId id : host::allEntities(db())) {
      AcDbObjectPointer<AcDbEntity> e(id, AcDb::kForRead);
      n += e && e->isKindOf(T::desc());
    }
    return n;
  }

  AcApDocument* m_doc = nullptr;
};
