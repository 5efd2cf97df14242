#pragma once
// Text encodings of drawing files: files of R2007 and later are UTF-8,
// older ones use the code page their header names ($DWGCODEPAGE). Inside
// strings, \U+XXXX names a Unicode character and \M+nXXXX a double-byte
// character of an Asian code page.
#include <string>
#include <string_view>

namespace host::dxf {

// The iconv name of a $DWGCODEPAGE value ("ANSI_936" -> "GBK"); empty for
// an unknown one.
std::string iconvName(std::string_view dwgCodePage);

// Converts text in the named code page to UTF-8. Bytes that do not decode
// are kept as the Latin-1 characters of the same value, so nothing is lost.
std::string decodeToUtf8(std::string_view text, const std::string& dwgCodePage);
// Replaces \U+XXXX and \M+nXXXX escapes by the characters they stand for.
std::string decodeEscapes(std::string_view utf8);
// Whether decodeEscapes would change the text.
inline bool hasEscapes(std::string_view text) {
  return text.find('\\') != std::string_view::npos &&
         (text.find("\\U+") != std::string_view::npos || text.find("\\M+") != std::string_view::npos);
}
// Encodes UTF-8 text for a file in the named code page; characters the page
// cannot hold become \U+XXXX escapes.
// unencodable, when given, receives how many characters became escapes.
std::string encodeFromUtf8(std::string_view utf8, const std::string& dwgCodePage, std::size_t* unencodable = nullptr);

// The code page for writing text in a version before R2007: wanted when
// given, else current when it holds every character, else the first of
// the usual drawing code pages that does (ANSI_936 for Chinese), else the one
// that holds most. unencodable receives how many characters the chosen page
// cannot hold (they are written as escapes).
std::string chooseCodePage(std::string_view utf8, const std::string& current, const std::string& wanted,
                           std::size_t& unencodable);

bool isAscii(std::string_view text);

}  // namespace host::dxf
