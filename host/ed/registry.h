#pragma once
// The host's registry store: named values under keys ("Software\\VKCAD",
// "PATH"), kept in a small text file under the user's configuration
// directory ($XDG_CONFIG_HOME or ~/.config, file envline/registry.ini;
// ENVLINE_REGISTRY names another file). Lines are "[key]" and "name=value".
#include <string>

namespace host::ed {

// The file the store is kept in.
std::string registryFile();
// The value, or false when the key or the value is missing.
bool readRegistryValue(const std::string& key, const std::string& name, std::string& value);
// Sets a value (creating the file, key and value as needed); written to a
// temporary file renamed into place. False when it cannot be written.
bool writeRegistryValue(const std::string& key, const std::string& name, const std::string& value);

}  // namespace host::ed
