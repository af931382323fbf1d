// Colours as six hexadecimal digits.
#pragma once

#include <string>
#include <string_view>

namespace vmr {

/// sRGB components, each 0 to 1.
struct Rgb {
    double r = 1, g = 1, b = 1;
    bool operator==(const Rgb&) const = default;
};

namespace HexColor {
/// "#26a69a" or "26A69A", blanks and tabs around it allowed. Anything else is white.
Rgb rgb(std::string_view hex);

/// "#rrggbb" in lower case; components are rounded, halves away from zero, and limited to 0...1.
std::string hex(const Rgb& color);
}  // namespace HexColor

}  // namespace vmr
