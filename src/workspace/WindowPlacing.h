// Where a window stands: how that is remembered, and where it goes in each of its stages. Pure functions.
#pragma once

#include <array>
#include <optional>
#include <vector>

namespace vmr {

/// In points, y downwards, as the toolkit counts; the first screen's top left corner is usually the origin.
struct ScreenRect {
    double x = 0, y = 0, width = 0, height = 0;
    bool operator==(const ScreenRect&) const = default;
};

/// A window's frame as it is stored: x, y, width and height, y upwards from the bottom left of the first screen, so
/// that it means the same where screens are counted that way.
std::array<double, 4> storedFrame(const ScreenRect& window, const ScreenRect& firstScreen);
/// The way back.
ScreenRect screenFrame(const std::array<double, 4>& stored, const ScreenRect& firstScreen);

/// The screens of the machine.
struct Screens {
    ScreenRect first;              ///< the whole first screen
    ScreenRect own;                ///< what is free on the screen that the window is on
    std::vector<ScreenRect> free;  ///< what is free on each
};

/// Where the form's window stands: 1000 x 580 in the middle of its screen.
ScreenRect signInPlace(const Screens& screens);

/// Where a window goes when somebody has entered. `wanted` is a size that a person asked for, in the middle of the
/// screen; else `saved` as it was, unless it is no frame of four numbers that a window can have, or meets no screen;
/// else all that is free.
ScreenRect enteredPlace(const Screens& screens, const std::optional<std::vector<double>>& saved,
                        const std::optional<ScreenRect>& wanted);

}  // namespace vmr
