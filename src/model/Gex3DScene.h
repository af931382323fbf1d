// The net gamma surface as a field of boxes: what is drawn, and what a ray through it meets. Pure, no toolkit.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "model/Gex3D.h"

namespace vmr {

/// A place or a direction: x along the strikes, y up, z towards the viewer; the floor's middle is the origin.
using ScenePoint = std::array<double, 3>;
/// A place of content that is turned by `angle` radians about y, as the camera meets it.
ScenePoint turned(const ScenePoint& place, double angle);

/// An upright box by its middle and its full lengths.
struct SceneBox {
    ScenePoint place{}, size{};
    bool operator==(const SceneBox&) const = default;
};

struct Gex3DBar {
    SceneBox box;
    double strike = 0;
    std::size_t expiration = 0;  ///< its row
    bool positive = false;
    std::string name;  ///< "bar|5000.5|6/12 (2DTE)|-1.3"
};

/// One line of text that faces the camera, centred on its place.
struct SceneLabel {
    std::string text;
    ScenePoint place{};
    double white = 0.5;    ///< how bright
    bool outside = false;  ///< it lies towards larger x of its place instead, so that the bars leave it free
    /// About, and seldom too little; texts are not measured.
    double halfWidth() const;
    bool operator==(const SceneLabel&) const = default;
};

/// A ray and the camera's own axes, in the scene's units. Directions have length 1.
struct SceneRay {
    ScenePoint from{}, direction{}, right{1, 0, 0}, up{0, 1, 0};
    /// The same as seen from content that is turned by `angle` radians about y.
    SceneRay inTurned(double angle) const;
};

/// Empty without strikes or expirations.
struct Gex3DScene {
    static constexpr double width = 200, depth = 120, tallest = 90, shortest = 0.4;
    static constexpr double labelSize = 3.4;
    static constexpr SceneBox floor{{0, -0.2, 0}, {204, 0.3, 124}};

    std::vector<Gex3DBar> bars;  ///< by expiration, then by strike; a value of 0 has none
    std::vector<SceneLabel> labels;
    SceneBox spotMarker;
    double peak = 0;  ///< the value that the tallest bar stands for

    bool empty() const { return labels.empty(); }

    /// Rows whose expiration is in `hidden` keep their place and their label, but have no bars, and the tallest of the
    /// others takes the full height.
    static Gex3DScene build(const Gex3DData& data, const std::set<std::string>& hidden = {});

    /// The index of the bar that the ray meets first; nothing where it meets none, or floor, marker or label first.
    /// Labels are `labelScale` times their size, and those not in `shown` are not there; without it all are.
    std::optional<std::size_t> barHit(const SceneRay& ray, double labelScale = 1,
                                      const std::vector<bool>& shown = {}) const;
};

/// Tells surfaces apart by spot, counts and last value alone; empty for none.
std::string dataID(const std::optional<Gex3DData>& data);

/// "5000" or "5000.5".
std::string strikeText(double strike);

/// "Strike 5000.5  ·  6/12 (2DTE)  ·  GEX -1.3M" of a bar's name; nothing for any other.
std::optional<std::string> tooltipOf(std::string_view name);

}  // namespace vmr
