#pragma once
// Numbers shown to a person: a coordinate that is zero up to rounding noise
// (a cosine of 90°, a sum of opposite offsets) is shown as 0, not -1.8e-16.
#include <cmath>

inline double Shown(double v) { return std::fabs(v) < 1e-9 ? 0.0 : v; }
