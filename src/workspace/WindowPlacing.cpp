#include "workspace/WindowPlacing.h"

#include <algorithm>
#include <cmath>

namespace vmr {

namespace {
bool meet(const ScreenRect& a, const ScreenRect& b) {
    return a.x < b.x + b.width && b.x < a.x + a.width && a.y < b.y + b.height && b.y < a.y + a.height;
}

// No screen is larger, and beyond it the toolkit's whole numbers end.
constexpr double longestSide = 32767;

bool usable(const std::vector<double>& frame) {
    const auto within = [](double value) { return std::isfinite(value) && std::abs(value) <= longestSide; };
    return frame.size() == 4 && std::all_of(frame.begin(), frame.end(), within) && frame[2] > 0 && frame[3] > 0;
}

ScreenRect centred(double width, double height, const ScreenRect& in) {
    return {std::max(in.x, std::floor(in.x + (in.width - width) / 2)),
            std::max(in.y, std::floor(in.y + (in.height - height) / 2)), width, height};
}
}  // namespace

std::array<double, 4> storedFrame(const ScreenRect& window, const ScreenRect& firstScreen) {
    return {window.x - firstScreen.x, firstScreen.y + firstScreen.height - (window.y + window.height), window.width,
            window.height};
}

ScreenRect screenFrame(const std::array<double, 4>& stored, const ScreenRect& firstScreen) {
    return {firstScreen.x + stored[0], firstScreen.y + firstScreen.height - stored[1] - stored[3], stored[2],
            stored[3]};
}

ScreenRect signInPlace(const Screens& screens) { return centred(1000, 580, screens.own); }

ScreenRect enteredPlace(const Screens& screens, const std::optional<std::vector<double>>& saved,
                        const std::optional<ScreenRect>& wanted) {
    if (wanted) return centred(wanted->width, wanted->height, screens.own);
    if (saved && usable(*saved)) {
        const ScreenRect frame = screenFrame({(*saved)[0], (*saved)[1], (*saved)[2], (*saved)[3]}, screens.first);
        const auto shows = [&frame](const ScreenRect& screen) { return meet(frame, screen); };
        if (std::any_of(screens.free.begin(), screens.free.end(), shows)) return frame;
    }
    return screens.own;
}

}  // namespace vmr
