#pragma once
// Loading modules: the system registry where the host's services are found
// by name, and the dynamic linker that loads a module's shared library and
// calls its entry point.
#include <map>
#include <string>
#include <vector>

#include "host/db/rx_class.h"

namespace AcRx {
enum AppMsgCode { kNullMsg = 0, kInitAppMsg = 1, kUnloadAppMsg = 2, kLoadDwgMsg = 3, kUnloadDwgMsg = 4 };
enum AppRetCode { kRetOK = 0, kRetError = 3 };
}  // namespace AcRx

// The entry point a module exports under the name "acrxEntryPoint".
using AcRxEntryPointFn = AcRx::AppRetCode (*)(AcRx::AppMsgCode msg, void* pkt);

// Names under which the host's services are registered.
inline constexpr const char* ACRX_DYNAMIC_LINKER = "DynamicLinker";
inline constexpr const char* ACRX_COMMAND_DOCK = "ACAD_REGISTERED_COMMANDS";
inline constexpr const char* ACAD_EDITOR_OBJ = "AcEditor";

class AcRxDictionary {
 public:
  AcRxObject* at(const char* key) const;
  void atPut(const char* key, AcRxObject* obj);

 private:
  std::map<std::string, AcRxObject*> m_entries;
};
// The system registry, with the dynamic linker, the command stack and the
// editor in it.
AcRxDictionary* acrxSysRegistry();

class AcRxDynamicLinker : public AcRxObject {
 public:
  ACRX_DECLARE_MEMBERS(AcRxDynamicLinker)
  // Loads a module (dlopen), finds its entry point and sends it the
  // initialisation message with the module's packet. False, with the reason
  // in error, when the library does not load, has no entry point, or the
  // entry point refuses.
  bool loadModule(const std::string& path, std::string& error);
  // Sends the unload message; the library stays mapped unless the module
  // unlocked itself and the unload message returned OK.
  bool unloadModule(const std::string& path);
  // Called by a module with its packet during initialisation.
  bool unlockApplication(void* appId);
  bool lockApplication(void* appId);
  bool registerAppMDIAware(void* appId);
  bool isApplicationLocked(const std::string& path) const;
  bool isAppMDIAware(const std::string& path) const;
  std::vector<std::string> loadedModules() const;

 private:
  struct Module {
    std::string path;
    void* handle = nullptr;
    AcRxEntryPointFn entry = nullptr;
    bool locked = true;
    bool mdiAware = false;
  };
  Module* find(void* appId);
  std::vector<Module*> m_modules;  // never freed: a module's code may be in use until exit
};

AcRxDynamicLinker* acrxDynamicLinkerPtr();
#define acrxDynamicLinker acrxDynamicLinkerPtr()

namespace host::ed {
// Where a front end finds a module's library: the file named by the
// environment variable envVariable when it is set, else fileName beside the
// running program or in ../lib from it, else builtPath (where the build put
// it).
std::string findModule(const char* envVariable, const char* fileName, const std::string& builtPath);
}  // namespace host::ed
