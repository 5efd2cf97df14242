#pragma once
// Whether the closed chain of a meridian profile is simple: no segment
// crosses or touches another except where neighbours share their vertex.
// Revolving a simple profile that stays on one side of its axis gives a
// valid solid, so this cheap 2D test can stand in for checking the solid.
#include <string>

struct MeridianProfile;

namespace host::brep {

enum class ProfileShape {
  kSimple,    // no crossings
  kCrossing,  // two segments cross or overlap: no valid solid
  kUnsure,    // neighbours meet again very close to their shared vertex
};

ProfileShape CheckProfileShape(const MeridianProfile& profile, std::string& detail);

}  // namespace host::brep
