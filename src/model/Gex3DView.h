// How a pane's 3D view of its surface stands: scene, camera, what is hidden, what the pointer is over.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "model/Gex3DLabels.h"
#include "model/Gex3DScene.h"
#include "model/OrbitCamera.h"

namespace vmr {

/// Nothing of it is kept once the view closes. Main thread.
class Gex3DView {
 public:
    static constexpr double turnsBy = 0.25;  ///< radians a second, while it rotates

    /// Shows this surface; nothing while there is none. False where it does not differ by its `dataID`.
    bool take(const std::optional<Gex3DData>& data);
    /// Another chart: nothing is hidden any more.
    void startOver();

    const Gex3DScene& scene() const { return scene_; }
    /// Raised with each other scene.
    std::uint64_t revision() const { return revision_; }
    /// No surface has come yet.
    bool loading() const { return !data_; }
    /// The rows' dates, and what is written beside them.
    const std::vector<std::string>& expirations() const { return shown().expirations; }
    const std::vector<std::string>& expLabels() const { return shown().expLabels; }
    /// Dates, as labels change at midnight.
    const std::set<std::string>& hidden() const { return hidden_; }
    void setHidden(const std::string& expiration, bool hidden);

    OrbitCamera camera;
    bool autoRotate = false;
    /// Radians that the content is turned by about y.
    double angle() const { return angle_; }
    /// So many seconds pass.
    void advance(double seconds);
    /// Camera and content as at first; what rotates goes on.
    void home();

    /// The area of the scene, in points from the pane's top left: x, y, width, height.
    std::array<double, 4> area{};
    /// The middles of the view's controls, likewise.
    std::map<std::string, std::array<double, 2>> controls;

    /// Where the pointer is in the area, beside which it meets nothing; nothing where it has left, or drags.
    void setPointer(const std::optional<std::array<double, 2>>& pointer);
    /// The bar under the pointer.
    const std::optional<std::size_t>& barOver() const { return over_; }
    /// Of that bar.
    std::optional<std::string> tooltip() const;
    /// The camera, the content, the area or the scene moved: other labels may have room, and something else may be
    /// under the pointer.
    void look();
    const Gex3DLabels& labels() const { return labels_; }
    /// Where a bar is in the area, near its top.
    std::optional<std::array<double, 2>> placeOf(const Gex3DBar& bar) const;

 private:
    const Gex3DData& shown() const;
    void build();
    void point();

    std::optional<Gex3DData> data_;
    std::string lastDataID_;
    Gex3DScene scene_;
    std::uint64_t revision_ = 1;
    std::set<std::string> hidden_;
    double angle_ = 0;
    std::optional<std::array<double, 2>> pointer_;
    std::optional<std::size_t> over_;
    Gex3DLabels labels_;
};

}  // namespace vmr
