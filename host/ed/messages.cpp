#include "host/ed/messages.h"

#include <cstdarg>
#include <cstdio>
#include <vector>

namespace {
std::string& buffer() {
  static std::string text;
  return text;
}
std::function<void(const std::string&)>& sink() {
  static std::function<void(const std::string&)> s;
  return s;
}
}  // namespace

int acutPrintf(const char* format, ...) {
  va_list args;
  va_start(args, format);
  va_list copy;
  va_copy(copy, args);
  const int n = std::vsnprintf(nullptr, 0, format, copy);
  va_end(copy);
  std::string text(n > 0 ? static_cast<std::size_t>(n) : 0, '\0');
  if (n > 0) std::vsnprintf(text.data(), text.size() + 1, format, args);
  va_end(args);
  buffer() += text;
  if (sink()) sink()(text);
  return n;
}

namespace host::ed {
void setMessageSink(std::function<void(const std::string&)> s) { sink() = std::move(s); }
std::string takeMessages() {
  std::string out;
  out.swap(buffer());
  return out;
}
}  // namespace host::ed
