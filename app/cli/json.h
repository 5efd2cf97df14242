#pragma once
// A small JSON writer for the command line's machine-readable output.
#include <cmath>
#include <cstdio>
#include <string>
#include <string_view>

namespace cli {

class Json {
 public:
  Json& beginObject() { return open('{'); }
  Json& endObject() { return close('}'); }
  Json& beginArray() { return open('['); }
  Json& endArray() { return close(']'); }
  Json& key(std::string_view k) {
    comma();
    string(k);
    m_out += ':';
    m_afterKey = true;
    return *this;
  }
  Json& value(std::string_view s) {
    comma();
    string(s);
    return *this;
  }
  Json& value(const char* s) { return value(std::string_view(s)); }
  // Twelve significant digits: 0.1 + 0.2 is 0.3, a coordinate of 1000 mm
  // keeps its nanometres; not a number (or infinite) is null.
  Json& value(double d) {
    comma();
    if (!std::isfinite(d)) {
      m_out += "null";
      return *this;
    }
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.12g", d == 0 ? 0.0 : d);
    m_out += buf;
    return *this;
  }
  Json& value(long long n) {
    comma();
    m_out += std::to_string(n);
    return *this;
  }
  Json& value(int n) { return value(static_cast<long long>(n)); }
  Json& value(bool b) {
    comma();
    m_out += b ? "true" : "false";
    return *this;
  }
  Json& null() {
    comma();
    m_out += "null";
    return *this;
  }
  const std::string& str() const { return m_out; }

 private:
  Json& open(char c) {
    comma();
    m_out += c;
    m_first = true;
    return *this;
  }
  Json& close(char c) {
    m_out += c;
    m_first = false;
    return *this;
  }
  void comma() {
    if (m_afterKey) {
      m_afterKey = false;
      return;
    }
    if (!m_first && !m_out.empty()) m_out += ',';
    m_first = false;
  }
  void string(std::string_view s) {
    m_out += '"';
    for (char c : s) {
      switch (c) {
        case '"': m_out += "\\\""; break;
        case '\\': m_out += "\\\\"; break;
        case '\n': m_out += "\\n"; break;
        case '\r': m_out += "\\r"; break;
        case '\t': m_out += "\\t"; break;
        default:
          if (static_cast<unsigned char>(c) < 0x20) {
            char buf[8];
            std::snprintf(buf, sizeof buf, "\\u%04x", c);
            m_out += buf;
          } else {
            m_out += c;
          }
      }
    }
    m_out += '"';
  }
  std::string m_out;
  bool m_first = true, m_afterKey = false;
};

}  // namespace cli
