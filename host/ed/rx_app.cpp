#include "host/ed/rx_app.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "host/ed/command_stack.h"
#include "host/ed/editor.h"

ACRX_DEFINE_MEMBERS(AcRxDynamicLinker, AcRxObject)

AcRxObject* AcRxDictionary::at(const char* key) const {
  const auto it = m_entries.find(key ? key : "");
  return it == m_entries.end() ? nullptr : it->second;
}

void AcRxDictionary::atPut(const char* key, AcRxObject* obj) { m_entries[key ? key : ""] = obj; }

AcRxDictionary* acrxSysRegistry() {
  static AcRxDictionary* registry = [] {
    auto* r = new AcRxDictionary;
    r->atPut(ACRX_DYNAMIC_LINKER, acrxDynamicLinkerPtr());
    r->atPut(ACRX_COMMAND_DOCK, acedRegCmdsPtr());
    r->atPut(ACAD_EDITOR_OBJ, acedEditorPtr());
    return r;
  }();
  return registry;
}

AcRxDynamicLinker* acrxDynamicLinkerPtr() {
  // Lives until the process ends, as the modules it loaded do: a module's
  // code and its record stay in use until exit.
  static AcRxDynamicLinker* linker = new AcRxDynamicLinker;
  return linker;
}

AcRxDynamicLinker::Module* AcRxDynamicLinker::find(void* appId) {
  const auto it = std::find(m_modules.begin(), m_modules.end(), static_cast<Module*>(appId));
  return it == m_modules.end() ? nullptr : *it;
}

bool AcRxDynamicLinker::loadModule(const std::string& path, std::string& error) {
  for (Module* m : m_modules)
    if (m->path == path) return true;  // loaded once per process
  void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!handle) {
    const char* why = dlerror();
    error = why ? why : ("cannot load " + path);
    return false;
  }
  auto entry = reinterpret_cast<AcRxEntryPointFn>(dlsym(handle, "acrxEntryPoint"));
  if (!entry) {
    error = path + " has no entry point acrxEntryPoint";
    dlclose(handle);
    return false;
  }
  auto* module = new Module{path, handle, entry};
  m_modules.push_back(module);
  if (entry(AcRx::kInitAppMsg, module) != AcRx::kRetOK) {
    error = path + " refused to initialise";
    std::erase(m_modules, module);
    delete module;
    dlclose(handle);
    return false;
  }
  return true;
}

bool AcRxDynamicLinker::unloadModule(const std::string& path) {
  for (Module* m : m_modules) {
    if (m->path != path) continue;
    if (m->locked) return false;
    // The module's commands and reactors may still point into its code, so
    // the library stays mapped; only the message is sent.
    return m->entry(AcRx::kUnloadAppMsg, m) == AcRx::kRetOK;
  }
  return false;
}

bool AcRxDynamicLinker::unlockApplication(void* appId) {
  Module* m = find(appId);
  if (m) m->locked = false;
  return m != nullptr;
}

bool AcRxDynamicLinker::lockApplication(void* appId) {
  Module* m = find(appId);
  if (m) m->locked = true;
  return m != nullptr;
}

bool AcRxDynamicLinker::registerAppMDIAware(void* appId) {
  Module* m = find(appId);
  if (m) m->mdiAware = true;
  return m != nullptr;
}

bool AcRxDynamicLinker::isApplicationLocked(const std::string& path) const {
  for (const Module* m : m_modules)
    if (m->path == path) return m->locked;
  return false;
}

bool AcRxDynamicLinker::isAppMDIAware(const std::string& path) const {
  for (const Module* m : m_modules)
    if (m->path == path) return m->mdiAware;
  return false;
}

std::vector<std::string> AcRxDynamicLinker::loadedModules() const {
  std::vector<std::string> out;
  for (const Module* m : m_modules) out.push_back(m->path);
  return out;
}

std::string host::ed::findModule(const char* envVariable, const char* fileName, const std::string& builtPath) {
  if (const char* env = std::getenv(envVariable); env && *env) return env;
  std::error_code ec;
  const auto self = std::filesystem::read_symlink("/proc/self/exe", ec);
  if (!ec) {
    for (const auto& candidate : {self.parent_path() / fileName, self.parent_path() / "../lib" / fileName})
      if (std::filesystem::exists(candidate, ec)) return candidate.string();
  }
  return builtPath;
}
