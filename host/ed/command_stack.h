#pragma once
// Commands: named functions in groups, looked up by global or local name.
#include <memory>
#include <string>
#include <vector>

#include "host/base/error_status.h"
#include "host/db/rx_class.h"

using AcRxFunctionPtr = void (*)();
class AcEdUIContext;

// Command flags (they combine).
enum AcEdCommandFlags { ACRX_CMD_MODAL = 0, ACRX_CMD_TRANSPARENT = 1, ACRX_CMD_USEPICKSET = 2, ACRX_CMD_REDRAW = 4 };

class AcEdCommand {
 public:
  AcEdCommand(std::string group, std::string globalName, std::string localName, int flags, AcRxFunctionPtr fn,
              int functionCode, void* resourceHandle)
      : m_group(std::move(group)), m_global(std::move(globalName)), m_local(std::move(localName)), m_flags(flags),
        m_fn(fn), m_functionCode(functionCode), m_resource(resourceHandle) {}
  const char* globalName() const { return m_global.c_str(); }
  const char* localName() const { return m_local.c_str(); }
  const char* commandGroup() const { return m_group.c_str(); }
  int commandFlags() const { return m_flags; }
  AcRxFunctionPtr functionAddr() const { return m_fn; }
  int functionCode() const { return m_functionCode; }
  void* resourceHandle() const { return m_resource; }

 private:
  std::string m_group, m_global, m_local;
  int m_flags;
  AcRxFunctionPtr m_fn;
  int m_functionCode;
  void* m_resource;
};

class AcEdCommandStack : public AcRxObject {
 public:
  ACRX_DECLARE_MEMBERS(AcEdCommandStack)
  AcEdCommandStack();
  ~AcEdCommandStack() override;

  // Adds a command to a group (created on first use). Names compare without
  // regard to ASCII case; a name already in the group is refused
  // (eDuplicateKey), a name of another group is shadowed by the newer group.
  Acad::ErrorStatus addCommand(const char* cmdGroupName, const char* cmdGlobalName, const char* cmdLocalName,
                               int commandFlags, AcRxFunctionPtr functionAddr, AcEdUIContext* uiContext = nullptr,
                               int fcode = -1, void* hResourceHandle = nullptr, AcEdCommand** cmdPtrRet = nullptr);
  Acad::ErrorStatus removeCmd(const char* cmdGroupName, const char* cmdGlobalName);
  Acad::ErrorStatus removeGroup(const char* groupName);

  // Look-up; the newest group first. Null when no group has the name.
  AcEdCommand* lookupGlobalCmd(const char* globalName) const;
  AcEdCommand* lookupLocalCmd(const char* localName) const;
  // As the command line looks a typed name up: a leading "_" asks for the
  // global name, "." for the host's own command even when a module
  // redefined it; both may be combined ("_." or "._").
  AcEdCommand* lookupCmd(const char* typedName) const;

  // Group names, oldest first, and a group's commands in registration order.
  std::vector<std::string> groupNames() const;
  std::vector<const AcEdCommand*> commandsOfGroup(const char* groupName) const;

 private:
  struct Group {
    std::string name;
    std::vector<std::unique_ptr<AcEdCommand>> commands;
  };
  Group* findGroup(const char* name) const;
  std::vector<std::unique_ptr<Group>> m_groups;
};

// The host's command stack (also in the system registry under
// "ACAD_REGISTERED_COMMANDS").
AcEdCommandStack* acedRegCmdsPtr();
#define acedRegCmds acedRegCmdsPtr()

namespace host::ed {
// The group of the host's own commands (OPEN, SAVE, EXPLODE, ...).
inline constexpr const char* kHostCommandGroup = "ACAD_MAIN";
}  // namespace host::ed
