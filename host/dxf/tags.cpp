#include "host/dxf/tags.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "host/db/resbuf.h"

namespace host::dxf {

namespace {
std::string_view trim(std::string_view s) {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r')) s.remove_suffix(1);
  return s;
}
}  // namespace

bool parseCode(std::string_view line, int& code) {
  // Fast path: spaces then up to four digits, the form writers use.
  std::size_t i = 0;
  while (i < line.size() && line[i] == ' ') ++i;
  if (i < line.size() && line.size() - i <= 4) {
    int v = 0;
    std::size_t j = i;
    for (; j < line.size() && line[j] >= '0' && line[j] <= '9'; ++j) v = v * 10 + (line[j] - '0');
    if (j == line.size() && j > i) {
      code = v;
      return true;
    }
  }
  line = trim(line);
  if (line.empty() || line.size() > 6) return false;
  int v = 0;
  const auto [p, ec] = std::from_chars(line.data(), line.data() + line.size(), v);
  if (ec != std::errc() || p != line.data() + line.size()) return false;
  code = v;
  return true;
}

bool looksNumeric(std::string_view text, bool* longExponent) {
  bool digit = false;
  int exponentDigits = -1;  // -1 before an exponent
  for (char c : text) {
    if (c >= '0' && c <= '9') {
      digit = true;
      exponentDigits += exponentDigits >= 0;
    } else if (c == 'e' || c == 'E') {
      exponentDigits = 0;
    } else if (c != '.' && c != '-' && c != '+' && c != ' ' && c != '\t' && c != '\r') {
      return false;
    }
  }
  if (longExponent) *longExponent = exponentDigits >= 3;
  return digit;
}

namespace {
// Decimal numbers of up to 19 digits whose value and power of ten are both
// exact doubles: one correctly rounded multiplication or division gives the
// same double as a full conversion. False leaves the text to the full one.
bool parseSimpleDouble(std::string_view text, double& value) {
  static constexpr double kPow10[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                      1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  const char* p = text.data();
  const char* const end = p + text.size();
  const bool negative = p < end && *p == '-';
  p += negative;
  std::uint64_t mantissa = 0;
  int digits = 0, fraction = 0;
  for (; p < end && static_cast<unsigned>(*p - '0') < 10; ++p, ++digits) mantissa = mantissa * 10 + (*p - '0');
  if (p < end && *p == '.') {
    for (++p; p < end && static_cast<unsigned>(*p - '0') < 10; ++p, ++digits, ++fraction)
      mantissa = mantissa * 10 + (*p - '0');
  }
  if (p != end || digits == 0 || digits > 19 || mantissa > (std::uint64_t(1) << 53) || fraction > 22) return false;
  const double m = static_cast<double>(mantissa);
  value = fraction ? m / kPow10[fraction] : m;
  if (negative) value = -value;
  return true;
}
}  // namespace

bool parseDouble(std::string_view text, double& value) {
  if (parseSimpleDouble(text, value)) return true;  // most values have no spaces to trim
  text = trim(text);
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  if (text.empty()) return false;
  if (parseSimpleDouble(text, value)) return true;
  const auto [p, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  return ec == std::errc() && p == text.data() + text.size() && std::isfinite(value);
}

bool parseInt(std::string_view text, long long& value) {
  text = trim(text);
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  if (text.empty()) return false;
  const auto [p, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec == std::errc() && p == text.data() + text.size()) return true;
  // Some writers put reals where integers belong ("1.0"); accept whole values.
  double d = 0;
  if (!parseDouble(text, d) || d != std::floor(d) || std::fabs(d) > 9e18) return false;
  value = static_cast<long long>(d);
  return true;
}

bool TagReader::readLine(std::string_view& line) {
  if (m_pos >= m_text.size()) return false;
  const char* start = m_text.data() + m_pos;
  const void* nl = std::memchr(start, '\n', m_text.size() - m_pos);
  const std::size_t len = nl ? static_cast<const char*>(nl) - start : m_text.size() - m_pos;
  line = std::string_view(start, len);
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  m_pos += len + (nl ? 1 : 0);
  ++m_line;
  return true;
}

namespace {
// The end of the line that starts at p: its '\n', or null when the text
// ends first. Most lines are a few bytes long, shorter than a library call:
// they are searched eight bytes at a time in a register.
constexpr std::uint64_t kOnes = 0x0101010101010101ULL, kHigh = 0x8080808080808080ULL;
const char* lineEnd(const char* p, const char* end) {
  for (const char* stop = end - p > 64 ? p + 64 : end; stop - p >= 8; p += 8) {
    std::uint64_t v;
    std::memcpy(&v, p, 8);
    v ^= kOnes * '\n';  // a zero byte where the newline is
    // The lowest flagged byte is the first zero byte (little-endian load).
    if (const std::uint64_t zero = (v - kOnes) & ~v & kHigh) return p + (__builtin_ctzll(zero) >> 3);
  }
  return p < end ? static_cast<const char*>(std::memchr(p, '\n', end - p)) : nullptr;
}
}  // namespace

bool TagReader::next(Tag& tag) {
  if (m_unread) {
    m_unread = false;
    tag = m_last;
    return true;
  }
  if (!m_error.empty()) return false;
  {
    // Fast path for the form writers use: optional spaces, up to four
    // digits, a line ending, then a value line that has its own ending.
    // Anything else takes the careful path below.
    const char* const begin = m_text.data();
    const char* const end = begin + m_text.size();
    const char* p = begin + m_pos;
    // Most writers give codes three columns ("  0", " 10", "100"): read
    // those without a loop.
    if (end - p >= 4 && (p[3] == '\n' || p[3] == '\r')) {
      const unsigned d0 = static_cast<unsigned>(p[0] - '0'), d1 = static_cast<unsigned>(p[1] - '0'),
                     d2 = static_cast<unsigned>(p[2] - '0');
      const bool s0 = p[0] == ' ', s1 = p[1] == ' ';
      const bool valid = (d2 < 10) & (s1 | (d1 < 10)) & (s0 | ((d0 < 10) & !s1));
      const std::size_t eol = p[3] == '\n' ? 1 : (end - p >= 5 && p[4] == '\n') ? 2 : 0;
      if (valid && eol) {
        const char* value = p + 3 + eol;
        if (const char* nl = lineEnd(value, end)) {
          const char* valueEnd = nl > value && nl[-1] == '\r' ? nl - 1 : nl;
          Tag t;
          t.code = static_cast<int>((s0 ? 0 : d0 * 100) + (s1 ? 0 : d1 * 10) + d2);
          t.value = std::string_view(value, static_cast<std::size_t>(valueEnd - value));
          t.offset = m_pos;
          t.line = m_line + 1;
          m_line += 2;
          m_pos = static_cast<std::size_t>(nl + 1 - begin);
          m_last = t;
          tag = t;
          return true;
        }
      }
    }
    while (p < end && *p == ' ') ++p;
    const char* const digits = p;
    int code = 0;
    while (p < end && p - digits < 4 && static_cast<unsigned>(*p - '0') < 10) code = code * 10 + (*p++ - '0');
    if (p > digits && p < end && (*p == '\n' || (*p == '\r' && p + 1 < end && p[1] == '\n'))) {
      p += *p == '\r' ? 2 : 1;
      if (const char* nl = lineEnd(p, end)) {
        const char* valueEnd = nl > p && nl[-1] == '\r' ? nl - 1 : nl;
        Tag t;
        t.code = code;
        t.value = std::string_view(p, static_cast<std::size_t>(valueEnd - p));
        t.offset = m_pos;
        t.line = m_line + 1;
        m_line += 2;
        m_pos = static_cast<std::size_t>(nl + 1 - begin);
        m_last = t;
        tag = t;
        return true;
      }
    }
  }
  std::string_view codeLine;
  // Blank lines at the very end of a file are not a tag.
  std::size_t offset = m_pos;
  do {
    offset = m_pos;
    if (!readLine(codeLine)) return false;
  } while (m_pos >= m_text.size() && trim(codeLine).empty());
  Tag t;
  t.offset = offset;
  t.line = m_line;
  if (!parseCode(codeLine, t.code)) {
    m_error = "line " + std::to_string(m_line) + ": expected a group code, found '" +
              std::string(codeLine.substr(0, 40)) + "'";
    return false;
  }
  if (!readLine(t.value)) {
    m_error = "line " + std::to_string(m_line) + ": group code " + std::to_string(t.code) +
              " has no value (the file ends)";
    return false;
  }
  m_last = t;
  tag = t;
  return true;
}

// --- binary files ------------------------------------------------------------

namespace {
constexpr std::string_view kSentinel("AutoCAD Binary DXF\r\n\x1a\0", 22);

struct ByteReader {
  std::string_view bytes;
  std::size_t pos = 0;
  bool has(std::size_t n) const { return n <= bytes.size() - pos; }
  template <class T>
  bool read(T& out) {
    if (!has(sizeof(T))) return false;
    std::memcpy(&out, bytes.data() + pos, sizeof(T));  // files are little-endian, as is this host
    pos += sizeof(T);
    return true;
  }
};
}  // namespace

bool isBinaryDxf(std::string_view bytes) { return bytes.substr(0, kSentinel.size()) == kSentinel; }

std::string formatDouble(double value) {
  if (value == 0) return "0.0";  // also turns -0 into 0
  char buf[40];
  const auto [p, ec] = std::to_chars(buf, buf + sizeof buf, value);
  std::string s(buf, p);
  if (s.find_first_of(".eEn") == std::string::npos) s += ".0";
  return s;
}

bool binaryToText(std::string_view bytes, std::string& text, std::string& error, std::vector<std::size_t>* offsets,
                  std::vector<std::string>* warnings) {
  std::size_t nonFinite = 0, firstNonFinite = 0;
  if (!isBinaryDxf(bytes)) {
    error = "not a binary drawing file";
    return false;
  }
  ByteReader r{bytes, kSentinel.size()};
  // Files of R13 and later store codes in two bytes: the first code is 0,
  // so its second byte is zero too.
  const bool wideCodes = r.has(2) && bytes[r.pos] == 0 && bytes[r.pos + 1] == 0;
  text.clear();
  text.reserve(bytes.size() * 2);
  char num[32];
  while (r.pos < bytes.size()) {
    const std::size_t at = r.pos;
    if (offsets) offsets->push_back(at);
    int code = 0;
    if (wideCodes) {
      std::int16_t c;
      if (!r.read(c)) break;
      code = c;
    } else {
      std::uint8_t c;
      if (!r.read(c)) break;
      code = c;
      if (c == 255) {
        std::int16_t wide;
        if (!r.read(wide)) {
          error = "byte offset " + std::to_string(at) + ": group code cut short";
          return false;
        }
        code = wide;
      }
    }
    if (code < 0 || code > 1071) {
      error = "byte offset " + std::to_string(at) + ": invalid group code " + std::to_string(code);
      return false;
    }
    text += std::to_string(code);
    text += '\n';
    const GroupKind kind = groupKind(code);
    bool ok = true;
    switch (kind) {
      case GroupKind::kString:
      case GroupKind::kHandle: {
        const void* end = std::memchr(bytes.data() + r.pos, 0, bytes.size() - r.pos);
        if (!end) {
          ok = false;
          break;
        }
        const std::size_t n = static_cast<const char*>(end) - (bytes.data() + r.pos);
        // Control characters cannot stand in a text line: caret notation (^J).
        for (std::size_t k = 0; k < n; ++k) {
          const char c = bytes[r.pos + k];
          if (static_cast<unsigned char>(c) < 0x20) {
            text += '^';
            text += static_cast<char>(c + 0x40);
          } else {
            text += c;
          }
        }
        r.pos += n + 1;
        break;
      }
      case GroupKind::kReal:
      case GroupKind::kPoint: {
        double d;
        ok = r.read(d);
        if (ok && !std::isfinite(d) && nonFinite++ == 0) firstNonFinite = at;
        if (ok) text += formatDouble(std::isfinite(d) ? d : 0.0);
        break;
      }
      case GroupKind::kInt16: {
        std::int16_t v;
        ok = r.read(v);
        if (ok) text += std::to_string(v);
        break;
      }
      case GroupKind::kInt32: {
        std::int32_t v;
        ok = r.read(v);
        if (ok) text += std::to_string(v);
        break;
      }
      case GroupKind::kInt64: {
        std::int64_t v;
        ok = r.read(v);
        if (ok) text += std::to_string(v);
        break;
      }
      case GroupKind::kBool: {
        std::uint8_t v;
        ok = r.read(v);
        if (ok) text += std::to_string(v);
        break;
      }
      case GroupKind::kBinary: {
        std::uint8_t n;
        ok = r.read(n) && r.has(n);
        if (ok) {
          for (std::size_t i = 0; i < n; ++i) {
            std::snprintf(num, sizeof num, "%02X", static_cast<unsigned char>(bytes[r.pos + i]));
            text += num;
          }
          r.pos += n;
        }
        break;
      }
    }
    if (!ok) {
      error = "byte offset " + std::to_string(at) + ": the value of group code " + std::to_string(code) +
              " runs past the end of the file";
      return false;
    }
    text += '\n';
  }
  if (nonFinite > 0 && warnings)
    warnings->push_back("byte offset " + std::to_string(firstNonFinite) + ": " + std::to_string(nonFinite) +
                        (nonFinite == 1 ? " real value is" : " real values are") +
                        " not a finite number (NaN or infinite) and " + (nonFinite == 1 ? "was" : "were") +
                        " read as 0");
  return true;
}

double tagDouble(const Tag& t) {
  double d = 0;
  parseDouble(t.value, d);
  return d;
}

long long tagInt(const Tag& t) {
  long long n = 0;
  parseInt(t.value, n);
  return n;
}

}  // namespace host::dxf
