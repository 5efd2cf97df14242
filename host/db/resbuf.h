#pragma once
// Result-buffer chains: linked lists of typed values whose type is a drawing
// file group code. They carry extended entity data and xrecord contents.
#include <cstdint>
#include <string>
#include <vector>

#include "host/db/object_id.h"

// The value kind that a group code carries.
enum class GroupKind { kString, kReal, kPoint, kInt16, kInt32, kInt64, kHandle, kBool, kBinary };
GroupKind groupKind(int code);

// Extra codes for values that are not group codes.
enum { RTNONE = 5000, RTREAL = 5001, RTPOINT = 5002, RTSHORT = 5003, RTSTR = 5005, RTLONG = 5010, RT3DPOINT = 5009 };

struct resbuf {
  resbuf* rbnext = nullptr;
  short restype = RTNONE;
  union resval_t {
    double rreal;
    double rpoint[3];
    short rint;
    std::int32_t rlong;
    std::int64_t mnInt64;
    char* rstring;  // owned by the node, UTF-8
    struct {
      std::int32_t clen;
      char* buf;
    } rbinary;
  } resval{};
};

resbuf* acutNewRb(int type);
// Frees a whole chain, strings included.
void acutRelRb(resbuf* rb);
// Builds a chain from (type, value) pairs ending with RTNONE, e.g.
// acutBuildList(1001, "APP", 1000, "text", 1070, 5, RTNONE). Strings are
// const char*, reals double, 16-bit values int, 32-bit values long,
// points const double*.
resbuf* acutBuildList(int type, ...);

// A group value in owned, chain-free form: what objects store.
struct GroupValue {
  short code = 0;
  double real[3] = {0, 0, 0};  // reals and points
  std::int64_t integer = 0;    // 16/32/64-bit integers and booleans
  std::string text;            // strings, handles (hex) and binary data

  static GroupValue fromString(short code, std::string s);
  static GroupValue fromReal(short code, double v);
  static GroupValue fromPoint(short code, double x, double y, double z);
  static GroupValue fromInt(short code, std::int64_t v);
  bool operator==(const GroupValue& o) const;
};
using GroupValues = std::vector<GroupValue>;

// Conversions between chains and stored values.
GroupValues valuesFromChain(const resbuf* rb);
resbuf* chainFromValues(const GroupValues& values);
resbuf* chainFromValues(GroupValues::const_iterator first, GroupValues::const_iterator last);

// RAII owner of a chain.
class ResbufChain {
 public:
  explicit ResbufChain(resbuf* head = nullptr) : m_head(head) {}
  ~ResbufChain() { acutRelRb(m_head); }
  ResbufChain(const ResbufChain&) = delete;
  ResbufChain& operator=(const ResbufChain&) = delete;
  resbuf* get() const { return m_head; }
  resbuf* release() {
    resbuf* h = m_head;
    m_head = nullptr;
    return h;
  }

 private:
  resbuf* m_head;
};
