#pragma once
// Dictionaries, extended records and groups.
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/db/object.h"

// A named, ordered set of owned objects. Keys compare with ASCII case folding.
class AcDbDictionary : public AcDbObject {
 public:
  ACRX_DECLARE_MEMBERS(AcDbDictionary)
  AcDbDictionary() = default;

  Acad::ErrorStatus getAt(const CString& key, AcDbObjectId& id) const;
  bool has(const CString& key) const;
  // Adds (or replaces) the entry and makes the dictionary the object's owner;
  // a new object joins the dictionary's database.
  Acad::ErrorStatus setAt(const CString& key, AcDbObject* obj, AcDbObjectId& id);
  Acad::ErrorStatus remove(const CString& key);
  int numEntries() const { return static_cast<int>(m_entries.size()); }
  struct Entry {
    CString key;
    AcDbObjectId id;
  };
  const std::vector<Entry>& entries() const { return m_entries; }
  bool isHardOwner() const { return m_hardOwner; }
  void setHardOwner(bool hard) { m_hardOwner = hard; }
  int mergeStyle() const { return m_mergeStyle; }
  void setMergeStyle(int style) { m_mergeStyle = style; }
  AcDbObject* cloneObject() const override;

  // Host-internal: an entry as a reader finds it (the object exists already).
  void adopt(const CString& key, AcDbObjectId id);

 private:
  std::vector<Entry> m_entries;
  bool m_hardOwner = false;
  int m_mergeStyle = 1;
};

class AcDbXrecord : public AcDbObject {
 public:
  ACRX_DECLARE_MEMBERS(AcDbXrecord)
  AcDbXrecord() = default;
  // The data as a new chain (the caller frees it); null when empty.
  Acad::ErrorStatus rbChain(resbuf** chain) const;
  Acad::ErrorStatus setFromRbChain(const resbuf& chain);
  const GroupValues& values() const { return m_values; }
  void setValues(GroupValues v) { m_values = std::move(v); }
  int cloningFlags() const { return m_cloning; }
  void setCloningFlags(int f) { m_cloning = f; }
  AcDbObject* cloneObject() const override { return new AcDbXrecord(*this); }

 private:
  GroupValues m_values;
  int m_cloning = 1;
};

// A named set of entities; erasing a group through the host's erase
// operation erases its members.
class AcDbGroup : public AcDbObject {
 public:
  ACRX_DECLARE_MEMBERS(AcDbGroup)
  AcDbGroup() = default;
  explicit AcDbGroup(const CString& description, bool selectable = true)
      : m_description(description), m_selectable(selectable) {}
  const CString& description() const { return m_description; }
  Acad::ErrorStatus setDescription(const CString& d);
  bool isSelectable() const { return m_selectable; }
  Acad::ErrorStatus setSelectable(bool s);
  bool isAnonymous() const { return m_anonymous; }
  void setAnonymous(bool a) { m_anonymous = a; }
  Acad::ErrorStatus append(AcDbObjectId id);
  Acad::ErrorStatus remove(AcDbObjectId id);
  Acad::ErrorStatus allEntityIds(AcDbObjectIdArray& ids) const;
  int numEntities() const { return m_members.length(); }
  AcDbObject* cloneObject() const override { return new AcDbGroup(*this); }

 private:
  CString m_description;
  bool m_selectable = true, m_anonymous = false;
  AcDbObjectIdArray m_members;
};

// Objects the host keeps without modelling; their data stay in unmodelled values.
class AcDbGenericObject : public AcDbObject {
 public:
  ACRX_DECLARE_MEMBERS(AcDbGenericObject)
  explicit AcDbGenericObject(std::string dxfName = {}) : m_dxfName(std::move(dxfName)) {}
  const std::string& dxfName() const { return m_dxfName; }
  AcDbObject* cloneObject() const override { return new AcDbGenericObject(*this); }

  // The object's own tags (subclass markers and values, from the first
  // marker to the extended data) once the host has changed them; until then
  // they are the text the object was read from.
  using Tags = std::vector<std::pair<int, std::string>>;
  const std::optional<Tags>& data() const { return m_data; }
  Acad::ErrorStatus setData(Tags data);

 private:
  std::string m_dxfName;
  std::optional<Tags> m_data;
};
