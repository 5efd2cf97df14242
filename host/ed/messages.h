#pragma once
// The command line: what the module prints for the user. Front ends choose
// where it goes; tests read it back.
#include <functional>
#include <string>

// Prints to the command line, printf style.
int acutPrintf(const char* format, ...);

namespace host::ed {
// Where printed text goes; by default it is kept in a buffer only.
void setMessageSink(std::function<void(const std::string&)> sink);
// Everything printed since the last take, then cleared.
std::string takeMessages();
}  // namespace host::ed
