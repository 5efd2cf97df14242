#pragma once
// Identity of a database object. An id stays valid for the life of its
// database; it names the database and the object's slot in it, so an id of a
// destroyed database, or one never issued, is recognised as invalid instead
// of being followed.
#include <cstdint>
#include <functional>
#include <string>

#include "host/base/ac_array.h"

class AcDbDatabase;

class AcDbHandle {
 public:
  AcDbHandle() = default;
  explicit AcDbHandle(std::uint64_t value) : m_value(value) {}
  // From upper- or lower-case hexadecimal; anything else gives the null handle.
  static AcDbHandle fromHex(const std::string& hex);
  std::string toHex() const;  // upper-case, no leading zeros ("0" for null)
  std::uint64_t value() const { return m_value; }
  bool isNull() const { return m_value == 0; }
  AcDbHandle& operator++() {
    ++m_value;
    return *this;
  }
  auto operator<=>(const AcDbHandle&) const = default;

 private:
  std::uint64_t m_value = 0;
};

class AcDbObjectId {
 public:
  constexpr AcDbObjectId() = default;
  static const AcDbObjectId kNull;

  bool isNull() const { return m_database == 0; }
  // Names an object of a live database.
  bool isValid() const;
  bool isErased() const;
  AcDbDatabase* database() const;
  AcDbHandle handle() const;

  auto operator<=>(const AcDbObjectId&) const = default;
  std::size_t hash() const { return (std::size_t(m_database) << 32) ^ m_index; }

  // Host-internal: the database serial and slot index.
  constexpr AcDbObjectId(std::uint32_t database, std::uint32_t index) : m_database(database), m_index(index) {}
  std::uint32_t databaseSerial() const { return m_database; }
  std::uint32_t slotIndex() const { return m_index; }

 private:
  std::uint32_t m_database = 0;  // 0: null
  std::uint32_t m_index = 0;
};

template <>
struct std::hash<AcDbObjectId> {
  std::size_t operator()(const AcDbObjectId& id) const noexcept { return id.hash(); }
};

using AcDbObjectIdArray = AcArray<AcDbObjectId>;
