#include "host/dxf/encoding.h"

#include <iconv.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "host/base/strings.h"

namespace host::dxf {

namespace {

struct Iconv {
  iconv_t cd;
  Iconv(const char* to, const char* from) : cd(iconv_open(to, from)) {}
  ~Iconv() {
    if (ok()) iconv_close(cd);
  }
  Iconv(const Iconv&) = delete;
  Iconv& operator=(const Iconv&) = delete;
  bool ok() const { return cd != reinterpret_cast<iconv_t>(-1); }
};

void appendUtf8(std::string& out, unsigned cp) {
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else if (cp < 0x10000) {
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (cp >> 18));
    out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Converts with iconv; a sequence that does not convert is handed to
// onInvalid, which appends its replacement and returns how many input bytes
// it used.
template <class OnInvalid>
std::string convert(std::string_view in, const char* to, const char* from, OnInvalid onInvalid) {
  Iconv cd(to, from);
  if (!cd.ok()) return std::string(in);
  std::string out;
  out.reserve(in.size() + in.size() / 2);
  char* src = const_cast<char*>(in.data());
  std::size_t left = in.size();
  char buf[4096];
  while (left > 0) {
    char* dst = buf;
    std::size_t room = sizeof buf;
    const std::size_t r = iconv(cd.cd, &src, &left, &dst, &room);
    out.append(buf, dst - buf);
    if (r == static_cast<std::size_t>(-1) && errno != E2BIG) {
      const std::size_t used = onInvalid(std::string_view(src, left), out);
      src += used;
      left -= used;
      iconv(cd.cd, nullptr, nullptr, nullptr, nullptr);  // reset the shift state
    }
  }
  return out;
}

}  // namespace

bool isAscii(std::string_view text) {
  for (unsigned char c : text)
    if (c >= 0x80) return false;
  return true;
}

std::string iconvName(std::string_view page) {
  const std::string p = foldCase(page);
  if (p == "ANSI_936") return "GBK";
  if (p == "ANSI_950") return "BIG5";
  if (p == "ANSI_932") return "CP932";
  if (p == "ANSI_949") return "CP949";
  if (p == "ANSI_1361") return "JOHAB";
  if (p == "ANSI_874") return "CP874";
  if (p.rfind("ANSI_125", 0) == 0 && p.size() == 9) return "CP" + p.substr(5);
  if (p.rfind("DOS", 0) == 0) return "CP" + p.substr(3);
  if (p == "ISO8859-1" || p == "ISO8859_1") return "ISO-8859-1";
  if (p == "ASCII" || p.empty()) return "CP1252";  // a superset that decodes every byte
  if (p == "UTF8" || p == "UTF-8") return "UTF-8";
  return {};
}

std::string decodeToUtf8(std::string_view text, const std::string& page) {
  if (isAscii(text)) return std::string(text);
  std::string from = iconvName(page);
  if (from.empty()) from = "CP1252";
  if (from == "UTF-8") return std::string(text);
  return convert(text, "UTF-8", from.c_str(), [](std::string_view rest, std::string& out) {
    appendUtf8(out, static_cast<unsigned char>(rest[0]));  // keep the byte as Latin-1
    return std::size_t{1};
  });
}

std::string decodeEscapes(std::string_view s) {
  if (s.find("\\U+") == std::string_view::npos && s.find("\\M+") == std::string_view::npos) return std::string(s);
  std::string out;
  out.reserve(s.size());
  for (std::size_t i = 0; i < s.size();) {
    if (s[i] == '\\' && i + 6 < s.size() + 0 && s.compare(i, 3, "\\U+") == 0 && i + 7 <= s.size()) {
      unsigned cp = 0;
      bool ok = true;
      for (int k = 0; k < 4; ++k) {
        const int d = hexDigit(s[i + 3 + k]);
        ok = ok && d >= 0;
        cp = cp * 16 + static_cast<unsigned>(d < 0 ? 0 : d);
      }
      if (ok) {
        appendUtf8(out, cp);
        i += 7;
        continue;
      }
    }
    if (s[i] == '\\' && i + 8 <= s.size() && s.compare(i, 3, "\\M+") == 0) {
      // \M+nXXXX: n picks the code page, XXXX is the two-byte character.
      static const char* const kPages[] = {nullptr, "CP932", "BIG5", "CP949", "JOHAB", "GBK"};
      const int n = s[i + 3] - '0';
      int bytes[4];
      bool ok = n >= 1 && n <= 5;
      for (int k = 0; k < 4 && ok; ++k) ok = (bytes[k] = hexDigit(s[i + 4 + k])) >= 0;
      if (ok) {
        const char pair[2] = {static_cast<char>(bytes[0] * 16 + bytes[1]), static_cast<char>(bytes[2] * 16 + bytes[3])};
        const std::string ch = convert(std::string_view(pair, 2), "UTF-8", kPages[n],
                                       [](std::string_view, std::string&) { return std::size_t{2}; });
        if (!ch.empty()) {
          out += ch;
          i += 8;
          continue;
        }
      }
    }
    out += s[i++];
  }
  return out;
}

std::string encodeFromUtf8(std::string_view utf8, const std::string& page, std::size_t* unencodable) {
  if (unencodable) *unencodable = 0;
  if (isAscii(utf8)) return std::string(utf8);
  const std::string to = iconvName(page).empty() ? "CP1252" : iconvName(page);
  if (to == "UTF-8") return std::string(utf8);
  return convert(utf8, to.c_str(), "UTF-8", [unencodable](std::string_view rest, std::string& out) {
    if (unencodable) ++*unencodable;
    // One UTF-8 character the page lacks: write it as an escape.
    const unsigned char c = static_cast<unsigned char>(rest[0]);
    const std::size_t len = c < 0x80 ? 1 : (c >> 5) == 6 ? 2 : (c >> 4) == 14 ? 3 : 4;
    unsigned cp = len == 1 ? c : c & (0xFF >> (len + 1));
    for (std::size_t k = 1; k < len && k < rest.size(); ++k) cp = (cp << 6) | (rest[k] & 0x3F);
    char buf[16];
    if (cp > 0xFFFF) cp = 0xFFFD;  // escapes hold four hex digits
    // Upper-case hex digits, as drafting programs write them; some readers
    // know no other form.
    std::snprintf(buf, sizeof buf, "\\U+%04X", cp);
    out += buf;
    return std::min(len, rest.size());
  });
}

std::string chooseCodePage(std::string_view utf8, const std::string& current, const std::string& wanted,
                           std::size_t& unencodable) {
  unencodable = 0;
  if (!wanted.empty()) {
    encodeFromUtf8(utf8, wanted, &unencodable);
    return wanted;
  }
  if (isAscii(utf8)) return current;
  encodeFromUtf8(utf8, current, &unencodable);
  if (unencodable == 0) return current;
  std::string best = current;
  for (const char* page : {"ANSI_936", "ANSI_950", "ANSI_932", "ANSI_949", "ANSI_1252", "ANSI_1250", "ANSI_1251",
                           "ANSI_1253", "ANSI_1254", "ANSI_1255", "ANSI_1256", "ANSI_1257", "ANSI_1258", "ANSI_874"}) {
    std::size_t missing = 0;
    encodeFromUtf8(utf8, page, &missing);
    if (missing < unencodable) {
      best = page;
      unencodable = missing;
    }
    if (missing == 0) break;
  }
  return best;
}

}  // namespace host::dxf
