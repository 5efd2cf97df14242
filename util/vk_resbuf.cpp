#include "util/vk_resbuf.h"

#include <cstring>

namespace {
char* copyText(const std::string& s) {
  char* out = new char[s.size() + 1];
  std::memcpy(out, s.c_str(), s.size() + 1);
  return out;
}

const char* kindName(GroupKind k) {
  switch (k) {
    case GroupKind::kString: return "a string";
    case GroupKind::kReal: return "a real";
    case GroupKind::kPoint: return "a point";
    case GroupKind::kInt16: return "a 16-bit integer";
    case GroupKind::kInt32: return "a 32-bit integer";
    case GroupKind::kInt64: return "a 64-bit integer";
    case GroupKind::kHandle: return "an object reference";
    case GroupKind::kBool: return "a boolean";
    case GroupKind::kBinary: return "binary data";
  }
  return "an unknown value";
}
}  // namespace

VKResBuf::~VKResBuf() { acutRelRb(m_head); }

void VKResBuf::Append(resbuf* rb) {
  (m_head ? m_tail->rbnext : m_head) = rb;
  m_tail = rb;
}

void VKResBuf::WriteString(const CString& value) {
  resbuf* rb = acutNewRb(kStringCode);
  rb->resval.rstring = copyText(value);
  Append(rb);
}

void VKResBuf::WriteInt32(std::int32_t value) {
  resbuf* rb = acutNewRb(kInt32Code);
  rb->resval.rlong = value;
  Append(rb);
}

void VKResBuf::WriteReal(double value) {
  resbuf* rb = acutNewRb(kRealCode);
  rb->resval.rreal = value;
  Append(rb);
}

void VKResBuf::WriteBool(bool value) {
  resbuf* rb = acutNewRb(kBoolCode);
  rb->resval.rint = value ? 1 : 0;
  Append(rb);
}

void VKResBuf::WritePoint(const AcGePoint3d& value) {
  resbuf* rb = acutNewRb(kPointCode);
  rb->resval.rpoint[0] = value.x;
  rb->resval.rpoint[1] = value.y;
  rb->resval.rpoint[2] = value.z;
  Append(rb);
}

void VKResBuf::WriteObjectId(AcDbObjectId id) {
  resbuf* rb = acutNewRb(kSoftPointerCode);
  rb->resval.rstring = copyText(id.isNull() ? std::string("0") : id.handle().toHex());
  Append(rb);
}

const resbuf* VKResBuf::Take(GroupKind kind, const char* what) {
  if (!m_next)
    throw Error(Error::eMissingItem, "item " + std::to_string(Position()) + ": " + what + " is missing");
  const GroupKind found = groupKind(m_next->restype);
  if (found != kind)
    throw Error(Error::eWrongType, "item " + std::to_string(Position()) + ": " + what + " expected, found " +
                                       kindName(found) + " (code " + std::to_string(m_next->restype) + ")");
  const resbuf* rb = m_next;
  m_next = m_next->rbnext;
  ++m_read;
  return rb;
}

CString VKResBuf::ReadString() {
  const resbuf* rb = Take(GroupKind::kString, "a string");
  return rb->resval.rstring ? CString(rb->resval.rstring) : CString();
}

std::int32_t VKResBuf::ReadInt32() { return Take(GroupKind::kInt32, "a 32-bit integer")->resval.rlong; }

double VKResBuf::ReadReal() { return Take(GroupKind::kReal, "a real")->resval.rreal; }

bool VKResBuf::ReadBool() { return Take(GroupKind::kBool, "a boolean")->resval.rint != 0; }

AcGePoint3d VKResBuf::ReadPoint() {
  const resbuf* rb = Take(GroupKind::kPoint, "a point");
  return AcGePoint3d(rb->resval.rpoint[0], rb->resval.rpoint[1], rb->resval.rpoint[2]);
}

AcDbHandle VKResBuf::ReadHandle() {
  const resbuf* rb = Take(GroupKind::kHandle, "an object reference");
  return AcDbHandle::fromHex(rb->resval.rstring ? rb->resval.rstring : "");
}

int VKResBuf::Remaining() const {
  int n = 0;
  for (const resbuf* rb = m_next; rb; rb = rb->rbnext) ++n;
  return n;
}
