#pragma once
// The 256 indexed drawing colours as RGB.
#include <cstdint>

namespace gui {
// RGB (0xRRGGBB) of a colour index 1 to 255; other indices give white.
std::uint32_t AciToRgb(int index);
}  // namespace gui
