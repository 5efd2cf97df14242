#include "output/units.h"

#include <cmath>
#include <iterator>

#include "host/base/strings.h"
#include "host/brep/solid.h"
#include "host/ge/matrix3d.h"

const char* const kUnitlessWarning =
    "the drawing declares no units ($INSUNITS 0): its lengths are taken as millimetres (give --units to say otherwise)";

namespace {
// Millimetres per unit, indexed by $INSUNITS code.
constexpr double kMillimetres[] = {
    1,                      // 0 unitless
    25.4,                   // 1 inches
    304.8,                  // 2 feet
    1609344,                // 3 miles
    1,                      // 4 millimetres
    10,                     // 5 centimetres
    1000,                   // 6 metres
    1e6,                    // 7 kilometres
    25.4e-6,                // 8 microinches
    0.0254,                 // 9 mils
    914.4,                  // 10 yards
    1e-7,                   // 11 angstroms
    1e-6,                   // 12 nanometres
    1e-3,                   // 13 microns
    100,                    // 14 decimetres
    1e4,                    // 15 decametres
    1e5,                    // 16 hectometres
    1e12,                   // 17 gigametres
    1.495978707e14,         // 18 astronomical units
    9.4607304725808e18,     // 19 light years
    3.0856775814913673e19,  // 20 parsecs
};
}  // namespace

double MillimetresPerUnit(int insunits) {
  return insunits >= 0 && insunits < static_cast<int>(std::size(kMillimetres)) ? kMillimetres[insunits] : 1;
}

bool UnitsFromName(const std::string& name, int& insunits) {
  struct Name {
    const char* text;
    int code;
  };
  static const Name names[] = {{"unitless", 0}, {"none", 0},    {"in", 1},      {"inch", 1},   {"inches", 1},
                               {"ft", 2},       {"foot", 2},    {"feet", 2},    {"mm", 4},     {"millimetre", 4},
                               {"millimeter", 4}, {"millimetres", 4}, {"millimeters", 4}, {"cm", 5}, {"m", 6},
                               {"metre", 6},    {"meter", 6},   {"metres", 6},  {"meters", 6}, {"km", 7},
                               {"mil", 9},      {"mils", 9},    {"yd", 10},     {"yard", 10},  {"um", 13},
                               {"micron", 13},  {"microns", 13}, {"dm", 14}};
  for (const Name& n : names)
    if (host::equalsNoCase(name, n.text)) {
      insunits = n.code;
      return true;
    }
  return false;
}

std::unique_ptr<AcDb3dSolid> SolidInMillimetres(const AcDb3dSolid& solid, double millimetresPerUnit) {
  if (millimetresPerUnit == 1 || !(millimetresPerUnit > 0) || !std::isfinite(millimetresPerUnit)) return nullptr;
  auto copy = std::make_unique<AcDb3dSolid>(solid);
  if (copy->transformBy(AcGeMatrix3d::scaling(millimetresPerUnit)) != Acad::eOk) return nullptr;
  return copy;
}
