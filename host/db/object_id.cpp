#include "host/db/object_id.h"

#include <cstdio>

#include "host/db/database.h"

const AcDbObjectId AcDbObjectId::kNull;

AcDbHandle AcDbHandle::fromHex(const std::string& hex) {
  if (hex.empty() || hex.size() > 16) return {};
  std::uint64_t v = 0;
  for (char c : hex) {
    int d;
    if (c >= '0' && c <= '9') d = c - '0';
    else if (c >= 'a' && c <= 'f') d = c - 'a' + 10;
    else if (c >= 'A' && c <= 'F') d = c - 'A' + 10;
    else return {};
    v = (v << 4) | static_cast<std::uint64_t>(d);
  }
  return AcDbHandle(v);
}

std::string AcDbHandle::toHex() const {
  char buf[24];
  std::snprintf(buf, sizeof buf, "%llX", static_cast<unsigned long long>(m_value));
  return buf;
}

bool AcDbObjectId::isValid() const {
  const AcDbDatabase* db = database();
  const AcDbDatabase::Slot* s = db ? db->slot(*this) : nullptr;
  return s && (s->object || s->deferred);
}

bool AcDbObjectId::isErased() const {
  const AcDbDatabase* db = database();
  const AcDbDatabase::Slot* s = db ? db->slot(*this) : nullptr;
  return s && s->erased;
}

AcDbDatabase* AcDbObjectId::database() const { return isNull() ? nullptr : AcDbDatabase::fromSerial(m_database); }

AcDbHandle AcDbObjectId::handle() const {
  const AcDbDatabase* db = database();
  const AcDbDatabase::Slot* s = db ? db->slot(*this) : nullptr;
  return s ? s->handle : AcDbHandle();
}
