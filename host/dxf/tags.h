#pragma once
// The raw tag layer of drawing exchange files: pairs of a group code and a
// value, read from text without interpreting them.
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace host::dxf {

struct Tag {
  int code = 0;
  std::string_view value;   // the value line without its line ending
  std::size_t offset = 0;   // byte offset of the code line in the text
  std::size_t line = 0;     // 1-based line number of the code line
};

// Reads tags from text. Errors (a code line that is no number, a missing
// value line) stop the reader; error() names the line.
class TagReader {
 public:
  explicit TagReader(std::string_view text) : m_text(text) {}
  // The next tag; false at the end of the text or on an error.
  bool next(Tag& tag);
  // Makes the next call return the last tag again.
  void unread() { m_unread = true; }
  bool failed() const { return !m_error.empty(); }
  const std::string& error() const { return m_error; }
  std::size_t position() const { return m_pos; }
  std::string_view text() const { return m_text; }

 private:
  bool readLine(std::string_view& line);
  std::string_view m_text;
  std::size_t m_pos = 0, m_line = 0;
  Tag m_last;
  bool m_unread = false;
  std::string m_error;
};

// Parses a group code line ("  0", "10") into code; false when it is none.
bool parseCode(std::string_view line, int& code);
// Numbers of tag values; false when the text is not a number of that kind.
bool parseDouble(std::string_view text, double& value);
bool parseInt(std::string_view text, long long& value);
// A tag's value as a number, 0 when it is none (the reader has checked
// numeric group codes by then).
double tagDouble(const Tag& t);
long long tagInt(const Tag& t);
// A quick check that a value could be a number (digits, sign, point, exponent).
// longExponent, when given, tells whether an exponent has three or more
// digits (a value that may lie beyond the range of doubles).
bool looksNumeric(std::string_view text, bool* longExponent = nullptr);

// Binary files begin with this sentinel.
bool isBinaryDxf(std::string_view bytes);
// Converts a binary file to the text form, one "code\nvalue\n" pair a tag;
// false with a message naming the byte offset when it is malformed. When
// offsets is given it receives the byte offset of every tag, so that later
// messages can name the place in the binary file. Reals that are not
// finite numbers (NaN, infinity) become 0, reported in warnings when given.
bool binaryToText(std::string_view bytes, std::string& text, std::string& error,
                  std::vector<std::size_t>* offsets = nullptr, std::vector<std::string>* warnings = nullptr);

// Shortest text that reads back as the same double ("1.0" rather than "1").
std::string formatDouble(double value);

}  // namespace host::dxf
