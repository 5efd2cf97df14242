#pragma once
// Symbol tables (blocks, layers, linetypes, text styles, applications) and
// their records. Record names are unique in a table, compared with ASCII
// case folding.
#include <unordered_map>
#include <vector>

#include "host/db/entity.h"

class AcDbSymbolTableRecord : public AcDbObject {
 public:
  ACRX_DECLARE_MEMBERS(AcDbSymbolTableRecord)
  const CString& getName() const { return m_name; }
  Acad::ErrorStatus getName(CString& name) const {
    name = m_name;
    return Acad::eOk;
  }
  Acad::ErrorStatus setName(const CString& name);
  // The standard flags group (70) as a file holds it.
  int flags() const { return m_flags; }
  void setFlags(int f) { m_flags = f; }

 protected:
  AcDbSymbolTableRecord() = default;
  AcDbSymbolTableRecord(const AcDbSymbolTableRecord&) = default;

 private:
  CString m_name;
  int m_flags = 0;
};

class AcDbSymbolTable : public AcDbObject {
 public:
  ACRX_DECLARE_MEMBERS(AcDbSymbolTable)
  // Adds a record; the table must be open for write and in a database.
  Acad::ErrorStatus add(AcDbObjectId& id, AcDbSymbolTableRecord* record);
  Acad::ErrorStatus add(AcDbSymbolTableRecord* record);
  // Unerased record by name.
  Acad::ErrorStatus getAt(const CString& name, AcDbObjectId& id, bool getErased = false) const;
  bool has(const CString& name) const;
  bool has(AcDbObjectId id) const;
  // Every record in the order they were added, erased ones included.
  const AcDbObjectIdArray& recordIds() const { return m_records; }
  // The table's own file data (max entries, ...) stays in unmodelled values.
  AcDbObject* cloneObject() const override { return nullptr; }  // tables are not cloned

  // Host-internal: a record renamed or added by a reader.
  void reindex();
  void adopt(AcDbObjectId id, const CString& name);

 protected:
  AcDbSymbolTable() = default;

 private:
  AcDbObjectIdArray m_records;
  std::unordered_map<std::string, AcDbObjectId> m_byName;  // folded name
};

class AcDbBlockTableRecord : public AcDbSymbolTableRecord {
 public:
  ACRX_DECLARE_MEMBERS(AcDbBlockTableRecord)
  AcDbBlockTableRecord() = default;
  AcGePoint3d origin() const { return m_origin; }
  Acad::ErrorStatus setOrigin(const AcGePoint3d& p);
  // Adds an entity at the end; the record must be in a database. The entity
  // takes the database's defaults for properties it has not set, and is
  // left open for write (close it).
  Acad::ErrorStatus appendAcDbEntity(AcDbObjectId& id, AcDbEntity* entity);
  Acad::ErrorStatus appendAcDbEntity(AcDbEntity* entity);
  // Entities in drawing order, erased ones included (check isErased).
  const AcDbObjectIdArray& entityIds() const { return m_entities; }
  bool isLayout() const;  // model or paper space
  bool isAnonymous() const { return !getName().empty() && getName()[0] == '*' && !isLayout(); }
  const CString& comments() const { return m_comments; }
  void setComments(const CString& c) { m_comments = c; }
  const CString& pathName() const { return m_path; }
  void setPathName(const CString& p) { m_path = p; }
  AcDbObject* cloneObject() const override;

  // Host-internal: the entity list as a reader builds it, and the objects
  // that open and close the block in a file.
  AcDbObjectIdArray& entityList() { return m_entities; }
  AcDbObjectId blockBeginId() const { return m_begin; }
  AcDbObjectId blockEndId() const { return m_end; }
  void setBlockBeginEnd(AcDbObjectId begin, AcDbObjectId end) {
    m_begin = begin;
    m_end = end;
  }

 private:
  AcDbObjectId m_begin, m_end;
  AcGePoint3d m_origin;
  AcDbObjectIdArray m_entities;
  CString m_comments, m_path;
};

class AcDbLayerTableRecord : public AcDbSymbolTableRecord {
 public:
  ACRX_DECLARE_MEMBERS(AcDbLayerTableRecord)
  AcDbLayerTableRecord() = default;
  bool isOff() const { return m_off; }
  void setIsOff(bool off);
  bool isFrozen() const { return m_frozen; }
  Acad::ErrorStatus setIsFrozen(bool frozen);
  bool isLocked() const { return m_locked; }
  void setIsLocked(bool locked);
  bool isPlottable() const { return m_plottable; }
  void setIsPlottable(bool plottable);
  AcCmColor color() const { return m_color; }
  void setColor(const AcCmColor& c);
  AcDbObjectId linetypeObjectId() const { return m_linetype; }
  void setLinetypeObjectId(AcDbObjectId id);
  std::int16_t lineWeight() const { return m_lineWeight; }
  void setLineWeight(std::int16_t w);
  AcDbObject* cloneObject() const override { return new AcDbLayerTableRecord(*this); }

 private:
  bool m_off = false, m_frozen = false, m_locked = false, m_plottable = true;
  AcCmColor m_color;
  AcDbObjectId m_linetype;
  std::int16_t m_lineWeight = -3;  // default
};

class AcDbLinetypeTableRecord : public AcDbSymbolTableRecord {
 public:
  ACRX_DECLARE_MEMBERS(AcDbLinetypeTableRecord)
  AcDbLinetypeTableRecord() = default;
  const CString& comments() const { return m_comments; }
  void setComments(const CString& c);
  double patternLength() const { return m_patternLength; }
  void setPatternLength(double l);
  // Dash lengths: positive drawn, negative gap, zero a dot.
  const std::vector<double>& dashes() const { return m_dashes; }
  void setDashes(const std::vector<double>& d);
  AcDbObject* cloneObject() const override { return new AcDbLinetypeTableRecord(*this); }

 private:
  CString m_comments;
  double m_patternLength = 0;
  std::vector<double> m_dashes;
};

class AcDbTextStyleTableRecord : public AcDbSymbolTableRecord {
 public:
  ACRX_DECLARE_MEMBERS(AcDbTextStyleTableRecord)
  AcDbTextStyleTableRecord() = default;
  const CString& fileName() const { return m_file; }
  void setFileName(const CString& f);
  const CString& bigFontFileName() const { return m_bigFont; }
  void setBigFontFileName(const CString& f);
  double textSize() const { return m_size; }
  void setTextSize(double s);
  double xScale() const { return m_xScale; }
  void setXScale(double s);
  AcDbObject* cloneObject() const override { return new AcDbTextStyleTableRecord(*this); }

 private:
  CString m_file = "txt", m_bigFont;
  double m_size = 0, m_xScale = 1;
};

class AcDbRegAppTableRecord : public AcDbSymbolTableRecord {
 public:
  ACRX_DECLARE_MEMBERS(AcDbRegAppTableRecord)
  AcDbRegAppTableRecord() = default;
  AcDbObject* cloneObject() const override { return new AcDbRegAppTableRecord(*this); }
};

// Records of the tables the host keeps without modelling (views, UCSs,
// viewports, dimension styles): their data stay in unmodelled values.
class AcDbGenericTableRecord : public AcDbSymbolTableRecord {
 public:
  ACRX_DECLARE_MEMBERS(AcDbGenericTableRecord)
  AcDbGenericTableRecord() = default;
  AcDbObject* cloneObject() const override { return new AcDbGenericTableRecord(*this); }
};

#define ENVLINE_TABLE(NAME)                        \
  class NAME : public AcDbSymbolTable {            \
   public:                                         \
    ACRX_DECLARE_MEMBERS(NAME)                     \
    NAME() = default;                              \
  };
ENVLINE_TABLE(AcDbBlockTable)
ENVLINE_TABLE(AcDbLayerTable)
ENVLINE_TABLE(AcDbLinetypeTable)
ENVLINE_TABLE(AcDbTextStyleTable)
ENVLINE_TABLE(AcDbRegAppTable)
ENVLINE_TABLE(AcDbGenericTable)
#undef ENVLINE_TABLE
