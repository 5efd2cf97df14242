#pragma once
// The module's entry point and its start-up: commands in the group
// "VKEncircleLine" and the reactors.
#include "host/ed/rx_app.h"

// Called by the host's dynamic linker. For the initialisation message only:
// unlocks the module, registers it as MDI aware, registers the commands and
// installs the reactors. Every message returns AcRx::kRetOK; unloading
// removes nothing.
extern "C" AcRx::AppRetCode acrxEntryPoint(AcRx::AppMsgCode msg, void* pkt);

namespace shell {
inline constexpr const char* kCommandGroup = "VKEncircleLine";

// Registers the three commands, then installs the editor reactor, the
// database reactor singleton (on the working database) and the document
// reactor, and tells the document reactor of every open document.
void InitApplication();
// The complete removal: removes and deletes the editor reactor, the
// database reactor singleton and the document reactor. Deliberately not
// called on unload: commands and reactors stay until the process ends.
void UnloadApplication();

// The command functions.
void VkTestToolDesign();
void VKTOOLDESIGNProfileAuto3D();
void VKTOOLDESIGNProfilesAuto3D();
}  // namespace shell
