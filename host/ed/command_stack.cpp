#include "host/ed/command_stack.h"

#include "host/base/strings.h"
#include "host/ed/host_commands.h"

ACRX_DEFINE_MEMBERS(AcEdCommandStack, AcRxObject)

AcEdCommandStack::AcEdCommandStack() = default;
AcEdCommandStack::~AcEdCommandStack() = default;

AcEdCommandStack* acedRegCmdsPtr() {
  static AcEdCommandStack* stack = [] {
    auto* s = new AcEdCommandStack;
    host::ed::registerHostCommands(*s);
    return s;
  }();
  return stack;
}

AcEdCommandStack::Group* AcEdCommandStack::findGroup(const char* name) const {
  for (const auto& g : m_groups)
    if (host::equalsNoCase(g->name, name)) return g.get();
  return nullptr;
}

Acad::ErrorStatus AcEdCommandStack::addCommand(const char* cmdGroupName, const char* cmdGlobalName,
                                               const char* cmdLocalName, int commandFlags,
                                               AcRxFunctionPtr functionAddr, AcEdUIContext* /*uiContext*/, int fcode,
                                               void* hResourceHandle, AcEdCommand** cmdPtrRet) {
  if (cmdPtrRet) *cmdPtrRet = nullptr;
  if (!cmdGroupName || !cmdGlobalName || !*cmdGlobalName || !functionAddr) return Acad::eInvalidInput;
  const char* local = cmdLocalName && *cmdLocalName ? cmdLocalName : cmdGlobalName;
  Group* group = findGroup(cmdGroupName);
  if (!group) {
    m_groups.push_back(std::make_unique<Group>());
    group = m_groups.back().get();
    group->name = cmdGroupName;
  }
  for (const auto& c : group->commands)
    if (host::equalsNoCase(c->globalName(), cmdGlobalName) || host::equalsNoCase(c->localName(), local))
      return Acad::eDuplicateKey;
  group->commands.push_back(std::make_unique<AcEdCommand>(group->name, cmdGlobalName, local, commandFlags,
                                                          functionAddr, fcode, hResourceHandle));
  if (cmdPtrRet) *cmdPtrRet = group->commands.back().get();
  return Acad::eOk;
}

Acad::ErrorStatus AcEdCommandStack::removeCmd(const char* cmdGroupName, const char* cmdGlobalName) {
  Group* group = findGroup(cmdGroupName);
  if (!group) return Acad::eKeyNotFound;
  const auto n = std::erase_if(group->commands,
                               [&](const auto& c) { return host::equalsNoCase(c->globalName(), cmdGlobalName); });
  return n ? Acad::eOk : Acad::eKeyNotFound;
}

Acad::ErrorStatus AcEdCommandStack::removeGroup(const char* groupName) {
  const auto n = std::erase_if(m_groups, [&](const auto& g) { return host::equalsNoCase(g->name, groupName); });
  return n ? Acad::eOk : Acad::eKeyNotFound;
}

AcEdCommand* AcEdCommandStack::lookupGlobalCmd(const char* globalName) const {
  for (auto g = m_groups.rbegin(); g != m_groups.rend(); ++g)
    for (const auto& c : (*g)->commands)
      if (host::equalsNoCase(c->globalName(), globalName)) return c.get();
  return nullptr;
}

AcEdCommand* AcEdCommandStack::lookupLocalCmd(const char* localName) const {
  for (auto g = m_groups.rbegin(); g != m_groups.rend(); ++g)
    for (const auto& c : (*g)->commands)
      if (host::equalsNoCase(c->localName(), localName)) return c.get();
  return nullptr;
}

AcEdCommand* AcEdCommandStack::lookupCmd(const char* typedName) const {
  if (!typedName) return nullptr;
  std::string_view name(typedName);
  bool global = false, builtIn = false;
  while (!name.empty() && (name.front() == '_' || name.front() == '.')) {
    (name.front() == '_' ? global : builtIn) = true;
    name.remove_prefix(1);
  }
  if (name.empty()) return nullptr;
  const std::string key(name);
  if (builtIn) {
    // The host's own command of that name, whatever a module added since.
    if (Group* host = findGroup(host::ed::kHostCommandGroup))
      for (const auto& c : host->commands)
        if (host::equalsNoCase(global ? c->globalName() : c->localName(), key)) return c.get();
  }
  return global ? lookupGlobalCmd(key.c_str()) : lookupLocalCmd(key.c_str());
}

std::vector<std::string> AcEdCommandStack::groupNames() const {
  std::vector<std::string> names;
  for (const auto& g : m_groups) names.push_back(g->name);
  return names;
}

std::vector<const AcEdCommand*> AcEdCommandStack::commandsOfGroup(const char* groupName) const {
  std::vector<const AcEdCommand*> out;
  if (const Group* g = findGroup(groupName))
    for (const auto& c : g->commands) out.push_back(c.get());
  return out;
}
