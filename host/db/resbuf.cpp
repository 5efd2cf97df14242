#include "host/db/resbuf.h"

#include <cstdarg>
#include <cstring>

GroupKind groupKind(int code) {
  // Value types of group codes as the drawing format defines them.
  if (code == RTSTR) return GroupKind::kString;
  if (code == RTREAL) return GroupKind::kReal;
  if (code == RTPOINT || code == RT3DPOINT) return GroupKind::kPoint;
  if (code == RTSHORT) return GroupKind::kInt16;
  if (code == RTLONG) return GroupKind::kInt32;
  if ((code >= 0 && code <= 4) || (code >= 6 && code <= 9)) return GroupKind::kString;
  if (code == 5 || code == 105) return GroupKind::kHandle;
  if (code >= 10 && code <= 18) return GroupKind::kPoint;
  if (code >= 20 && code <= 59) return GroupKind::kReal;
  if (code >= 60 && code <= 79) return GroupKind::kInt16;
  if (code >= 90 && code <= 99) return GroupKind::kInt32;
  if (code == 100 || code == 101 || code == 102) return GroupKind::kString;
  if (code >= 110 && code <= 112) return GroupKind::kPoint;
  if (code >= 113 && code <= 149) return GroupKind::kReal;
  if (code >= 160 && code <= 169) return GroupKind::kInt64;
  if (code >= 170 && code <= 179) return GroupKind::kInt16;
  if (code >= 210 && code <= 219) return GroupKind::kPoint;
  if (code >= 220 && code <= 239) return GroupKind::kReal;
  if (code >= 270 && code <= 289) return GroupKind::kInt16;
  if (code >= 290 && code <= 299) return GroupKind::kBool;
  if (code >= 300 && code <= 309) return GroupKind::kString;
  if (code >= 310 && code <= 319) return GroupKind::kBinary;
  if (code >= 320 && code <= 369) return GroupKind::kHandle;
  if (code >= 370 && code <= 389) return GroupKind::kInt16;
  if (code >= 390 && code <= 399) return GroupKind::kHandle;
  if (code >= 400 && code <= 409) return GroupKind::kInt16;
  if (code >= 410 && code <= 419) return GroupKind::kString;
  if (code >= 420 && code <= 429) return GroupKind::kInt32;
  if (code >= 430 && code <= 439) return GroupKind::kString;
  if (code >= 440 && code <= 449) return GroupKind::kInt32;
  if (code >= 450 && code <= 459) return GroupKind::kInt32;
  if (code >= 460 && code <= 469) return GroupKind::kReal;
  if (code >= 470 && code <= 479) return GroupKind::kString;
  if (code >= 480 && code <= 481) return GroupKind::kHandle;
  if (code == 999) return GroupKind::kString;
  if (code >= 1000 && code <= 1003) return GroupKind::kString;
  if (code == 1004) return GroupKind::kBinary;
  if (code == 1005) return GroupKind::kHandle;
  if (code >= 1010 && code <= 1013) return GroupKind::kPoint;
  if (code >= 1020 && code <= 1039) return GroupKind::kReal;
  if (code >= 1040 && code <= 1059) return GroupKind::kReal;
  if (code >= 1060 && code <= 1070) return GroupKind::kInt16;
  if (code == 1071) return GroupKind::kInt32;
  return GroupKind::kString;
}

namespace {
char* dupString(const char* s) {
  const std::size_t n = std::strlen(s);
  char* out = new char[n + 1];
  std::memcpy(out, s, n + 1);
  return out;
}
bool ownsString(int type) {
  const GroupKind k = groupKind(type);
  return k == GroupKind::kString || k == GroupKind::kHandle;
}
}  // namespace

resbuf* acutNewRb(int type) {
  auto* rb = new resbuf;
  rb->restype = static_cast<short>(type);
  return rb;
}

void acutRelRb(resbuf* rb) {
  while (rb) {
    resbuf* next = rb->rbnext;
    if (ownsString(rb->restype)) delete[] rb->resval.rstring;
    if (groupKind(rb->restype) == GroupKind::kBinary) delete[] rb->resval.rbinary.buf;
    delete rb;
    rb = next;
  }
}

resbuf* acutBuildList(int type, ...) {
  va_list args;
  va_start(args, type);
  resbuf* head = nullptr;
  resbuf* tail = nullptr;
  while (type != RTNONE && type != 0) {
    resbuf* rb = acutNewRb(type);
    switch (groupKind(type)) {
      case GroupKind::kString:
      case GroupKind::kHandle:
        rb->resval.rstring = dupString(va_arg(args, const char*));
        break;
      case GroupKind::kReal:
        rb->resval.rreal = va_arg(args, double);
        break;
      case GroupKind::kPoint: {
        const double* p = va_arg(args, const double*);
        for (int i = 0; i < 3; ++i) rb->resval.rpoint[i] = p[i];
        break;
      }
      case GroupKind::kInt16:
      case GroupKind::kBool:
        rb->resval.rint = static_cast<short>(va_arg(args, int));
        break;
      case GroupKind::kInt32:
        rb->resval.rlong = static_cast<std::int32_t>(va_arg(args, long));
        break;
      case GroupKind::kInt64:
        rb->resval.mnInt64 = va_arg(args, long long);
        break;
      case GroupKind::kBinary: {
        const char* s = va_arg(args, const char*);
        rb->resval.rbinary.clen = static_cast<std::int32_t>(std::strlen(s));
        rb->resval.rbinary.buf = dupString(s);
        break;
      }
    }
    (head ? tail->rbnext : head) = rb;
    tail = rb;
    type = va_arg(args, int);
  }
  va_end(args);
  return head;
}

GroupValue GroupValue::fromString(short code, std::string s) {
  GroupValue v;
  v.code = code;
  v.text = std::move(s);
  return v;
}
GroupValue GroupValue::fromReal(short code, double r) {
  GroupValue v;
  v.code = code;
  v.real[0] = r;
  return v;
}
GroupValue GroupValue::fromPoint(short code, double x, double y, double z) {
  GroupValue v;
  v.code = code;
  v.real[0] = x;
  v.real[1] = y;
  v.real[2] = z;
  return v;
}
GroupValue GroupValue::fromInt(short code, std::int64_t i) {
  GroupValue v;
  v.code = code;
  v.integer = i;
  return v;
}
bool GroupValue::operator==(const GroupValue& o) const {
  return code == o.code && real[0] == o.real[0] && real[1] == o.real[1] && real[2] == o.real[2] &&
         integer == o.integer && text == o.text;
}

GroupValues valuesFromChain(const resbuf* rb) {
  GroupValues out;
  for (; rb; rb = rb->rbnext) {
    GroupValue v;
    v.code = rb->restype;
    switch (groupKind(rb->restype)) {
      case GroupKind::kString:
      case GroupKind::kHandle:
        v.text = rb->resval.rstring ? rb->resval.rstring : "";
        break;
      case GroupKind::kReal:
        v.real[0] = rb->resval.rreal;
        break;
      case GroupKind::kPoint:
        for (int i = 0; i < 3; ++i) v.real[i] = rb->resval.rpoint[i];
        break;
      case GroupKind::kInt16:
      case GroupKind::kBool:
        v.integer = rb->resval.rint;
        break;
      case GroupKind::kInt32:
        v.integer = rb->resval.rlong;
        break;
      case GroupKind::kInt64:
        v.integer = rb->resval.mnInt64;
        break;
      case GroupKind::kBinary:
        if (rb->resval.rbinary.buf) v.text.assign(rb->resval.rbinary.buf, rb->resval.rbinary.clen);
        break;
    }
    out.push_back(std::move(v));
  }
  return out;
}

resbuf* chainFromValues(GroupValues::const_iterator first, GroupValues::const_iterator last) {
  resbuf* head = nullptr;
  resbuf* tail = nullptr;
  for (auto it = first; it != last; ++it) {
    resbuf* rb = acutNewRb(it->code);
    switch (groupKind(it->code)) {
      case GroupKind::kString:
      case GroupKind::kHandle:
        rb->resval.rstring = dupString(it->text.c_str());
        break;
      case GroupKind::kReal:
        rb->resval.rreal = it->real[0];
        break;
      case GroupKind::kPoint:
        for (int i = 0; i < 3; ++i) rb->resval.rpoint[i] = it->real[i];
        break;
      case GroupKind::kInt16:
      case GroupKind::kBool:
        rb->resval.rint = static_cast<short>(it->integer);
        break;
      case GroupKind::kInt32:
        rb->resval.rlong = static_cast<std::int32_t>(it->integer);
        break;
      case GroupKind::kInt64:
        rb->resval.mnInt64 = it->integer;
        break;
      case GroupKind::kBinary:
        rb->resval.rbinary.clen = static_cast<std::int32_t>(it->text.size());
        rb->resval.rbinary.buf = new char[it->text.size() + 1];
        std::memcpy(rb->resval.rbinary.buf, it->text.data(), it->text.size());
        rb->resval.rbinary.buf[it->text.size()] = 0;
        break;
    }
    (head ? tail->rbnext : head) = rb;
    tail = rb;
  }
  return head;
}

resbuf* chainFromValues(const GroupValues& values) { return chainFromValues(values.begin(), values.end()); }
