#pragma once
// Drawing text as it is shown: control codes of single-line text and the
// formatting of multi-line text turned into plain characters.
#include <string>
#include <vector>

namespace gui {
// "%%c" → "Ø", "%%d" → "°", "%%p" → "±", "%%%" → "%", "%%nnn" → the
// character nnn; "%%u" and "%%o" (underline, overline) are dropped.
std::string PlainText(const std::string& text);
// The lines of a multi-line text without its formatting: "\P" breaks a
// line, "\~" is a space, "\\", "\{", "\}" are the characters, groups and
// codes such as "\f...;", "\H2x;", "\C1;", "\L" are dropped, and "\S1^2;"
// shows its stacked parts as "1/2".
std::vector<std::string> PlainMTextLines(const std::string& contents);
}  // namespace gui
