#include "app/gui/view/aci_colours.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace gui {

namespace {
std::uint32_t rgb(double r, double g, double b) {
  auto c = [](double v) { return static_cast<std::uint32_t>(std::lround(std::clamp(v, 0.0, 1.0) * 255)); };
  return c(r) << 16 | c(g) << 8 | c(b);
}

// Indices 10 to 249 run through 24 hues in steps of 15°; within a hue the
// last digit gives five shades, each full (even) and half (odd) saturated.
std::array<std::uint32_t, 256> makeTable() {
  std::array<std::uint32_t, 256> t{};
  t.fill(0xFFFFFF);
  const std::uint32_t first[10] = {0x000000, 0xFF0000, 0xFFFF00, 0x00FF00, 0x00FFFF,
                                   0x0000FF, 0xFF00FF, 0xFFFFFF, 0x808080, 0xC0C0C0};
  for (int i = 0; i < 10; ++i) t[i] = first[i];
  const double values[5] = {1.0, 0.8, 0.6, 0.5, 0.3};
  for (int i = 10; i < 250; ++i) {
    const double hue = ((i - 10) / 10) * 15.0;
    const int shade = (i % 10) / 2;
    const double v = values[shade], s = (i % 2 == 0) ? 1.0 : 0.5;
    const double c = v * s, h = hue / 60.0, x = c * (1 - std::fabs(std::fmod(h, 2.0) - 1)), m = v - c;
    double r = 0, g = 0, b = 0;
    if (h < 1) r = c, g = x;
    else if (h < 2) r = x, g = c;
    else if (h < 3) g = c, b = x;
    else if (h < 4) g = x, b = c;
    else if (h < 5) r = x, b = c;
    else r = c, b = x;
    t[i] = rgb(r + m, g + m, b + m);
  }
  const double greys[6] = {0.2, 0.31, 0.41, 0.51, 0.68, 1.0};
  for (int i = 250; i < 256; ++i) t[i] = rgb(greys[i - 250], greys[i - 250], greys[i - 250]);
  return t;
}
}  // namespace

std::uint32_t AciToRgb(int index) {
  static const std::array<std::uint32_t, 256> table = makeTable();
  return index >= 1 && index <= 255 ? table[index] : 0xFFFFFF;
}

}  // namespace gui
