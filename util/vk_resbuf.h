#pragma once
// VKResBuf: writes values into a result-buffer chain and reads them back in
// the same order, each as a typed item. The module keeps data it stores in
// the drawing (xrecords) this way.
//
// Each value kind is written with one group code: strings 1, 32-bit integers
// 90, reals 40, booleans 290, points 10, object references 331 (a soft
// pointer: it names the object by handle, does not own it, and a drawing
// file keeps it when the object is gone). The reader checks each item's
// kind, not its exact code, so data written by other programs with codes of
// the same kind read the same.
#include <cstdint>
#include <stdexcept>
#include <string>

#include "host/base/strings.h"
#include "host/db/object_id.h"
#include "host/db/resbuf.h"
#include "host/ge/vectors.h"

class VKResBuf {
 public:
  // Group codes written for each kind of value.
  enum Code : short {
    kStringCode = 1,
    kPointCode = 10,
    kRealCode = 40,
    kInt32Code = 90,
    kBoolCode = 290,
    kSoftPointerCode = 331,
  };

  // What the reader raises when the chain runs out or an item is of another
  // kind. ErrorCode() is eMissingItem or eWrongType.
  class Error : public std::runtime_error {
   public:
    enum ErrorCode { eMissingItem = 1, eWrongType = 2 };
    Error(ErrorCode code, const std::string& what) : std::runtime_error(what), m_code(code) {}
    ErrorCode Code() const { return m_code; }

   private:
    ErrorCode m_code;
  };

  // An empty chain, for writing.
  VKResBuf() = default;
  // Reads the chain in place; the caller owns it and keeps it alive.
  explicit VKResBuf(const resbuf* chain) : m_next(chain) {}
  ~VKResBuf();
  VKResBuf(const VKResBuf&) = delete;
  VKResBuf& operator=(const VKResBuf&) = delete;

  // Writing: appends one item.
  void WriteString(const CString& value);
  void WriteInt32(std::int32_t value);
  void WriteReal(double value);
  void WriteBool(bool value);
  void WritePoint(const AcGePoint3d& value);
  // The object's handle ("0" for the null id).
  void WriteObjectId(AcDbObjectId id);

  // The chain written so far; it stays owned by this object.
  const resbuf* Chain() const { return m_head; }

  // Reading: takes the next item; raises Error when there is none or it is
  // of another kind.
  CString ReadString();
  std::int32_t ReadInt32();
  double ReadReal();
  bool ReadBool();
  AcGePoint3d ReadPoint();
  // The handle an object reference names (null for "0"); resolving it is
  // the caller's business, since a reference may outlive its object.
  AcDbHandle ReadHandle();

  // True when every item has been read.
  bool AtEnd() const { return m_next == nullptr; }
  // Items not read yet.
  int Remaining() const;
  // Running number (from 1) of the item the next read takes.
  int Position() const { return m_read + 1; }

 private:
  const resbuf* Take(GroupKind kind, const char* what);
  void Append(resbuf* rb);

  resbuf* m_head = nullptr;  // the chain written, owned
  resbuf* m_tail = nullptr;
  const resbuf* m_next = nullptr;
  int m_read = 0;
};
