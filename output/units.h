#pragma once
// Drawing units ($INSUNITS) for solids: SAT and STEP files carry
// millimetres, so a solid of a drawing in inches or metres is scaled on the
// way out.
#include <memory>
#include <string>

class AcDb3dSolid;

// Millimetres in one unit of an $INSUNITS code; 1 for unitless (0) and
// for codes that name no length.
double MillimetresPerUnit(int insunits);

// The $INSUNITS code of a unit name users type ("mm", "inch", "in", "m",
// "cm", "ft", "feet", "micron", ...); false when it names none.
bool UnitsFromName(const std::string& name, int& insunits);

// A copy of the solid scaled from drawing units to millimetres; null when
// no scaling is needed (write the solid itself) or it cannot be scaled.
std::unique_ptr<AcDb3dSolid> SolidInMillimetres(const AcDb3dSolid& solid, double millimetresPerUnit);

// The warning for a drawing that declares no units (its lengths are taken
// as millimetres).
extern const char* const kUnitlessWarning;
