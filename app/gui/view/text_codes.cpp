#include "app/gui/view/text_codes.h"

#include <cctype>

namespace gui {

namespace {
void appendUtf8(std::string& out, unsigned code) {
  if (code < 0x80) {
    out += static_cast<char>(code);
  } else if (code < 0x800) {
    out += static_cast<char>(0xC0 | (code >> 6));
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else {
    out += static_cast<char>(0xE0 | (code >> 12));
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  }
}
}  // namespace

std::string PlainText(const std::string& text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text.compare(i, 2, "%%") != 0 || i + 2 >= text.size()) {
      out += text[i];
      continue;
    }
    const char c = static_cast<char>(std::tolower(static_cast<unsigned char>(text[i + 2])));
    if (c == 'c') out += "Ø";
    else if (c == 'd') out += "°";
    else if (c == 'p') out += "±";
    else if (c == '%') out += "%";
    else if (c == 'u' || c == 'o') {
    } else if (std::isdigit(static_cast<unsigned char>(c))) {
      std::size_t j = i + 2;
      unsigned code = 0;
      while (j < text.size() && j < i + 5 && std::isdigit(static_cast<unsigned char>(text[j])))
        code = code * 10 + static_cast<unsigned>(text[j++] - '0');
      appendUtf8(out, code);
      i = j - 1;
      continue;
    } else {
      out += text.substr(i, 3);
    }
    i += 2;
  }
  return out;
}

std::vector<std::string> PlainMTextLines(const std::string& contents) {
  std::vector<std::string> lines(1);
  for (std::size_t i = 0; i < contents.size(); ++i) {
    const char c = contents[i];
    if (c == '{' || c == '}') continue;
    if (c != '\\' || i + 1 >= contents.size()) {
      lines.back() += c;
      continue;
    }
    const char code = contents[++i];
    switch (code) {
      case 'P': lines.emplace_back(); break;
      case '~': lines.back() += ' '; break;
      case '\\': case '{': case '}': lines.back() += code; break;
      case 'L': case 'l': case 'O': case 'o': case 'K': case 'k': break;
      case 'S': {  // stacked: up to ';', with '^', '/' or '#' between the parts
        const std::size_t end = contents.find(';', i);
        std::string stack = contents.substr(i + 1, end == std::string::npos ? std::string::npos : end - i - 1);
        // Shown inline after a space ("75 0/-0.05", not "750/ -0.05").
        std::erase(stack, ' ');
        for (char& s : stack)
          if (s == '^' || s == '#') s = '/';
        if (!lines.back().empty() && lines.back().back() != ' ') lines.back() += ' ';
        lines.back() += stack;
        i = end == std::string::npos ? contents.size() : end;
        break;
      }
      default: {  // codes with an argument up to ';'
        const std::size_t end = contents.find(';', i);
        i = end == std::string::npos ? contents.size() : end;
        break;
      }
    }
  }
  for (std::string& line : lines) line = PlainText(line);
  return lines;
}

}  // namespace gui
