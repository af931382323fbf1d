// Which labels of the 3D view have room on the screen, and how large they are there.
#pragma once

#include <vector>

#include "model/Gex3DScene.h"
#include "model/OrbitCamera.h"

namespace vmr {

struct Gex3DLabels {
    double scale = 1;         ///< of their size in the scene, so that they can be read in a small view, too
    std::vector<bool> shown;  ///< of each label of the scene
    bool operator==(const Gex3DLabels&) const = default;

    /// In a view of `width` by `height` points, over content that is turned by `angle`. Of a row of labels every
    /// second, fourth and so on is placed first and the others where they keep off those, so that a turn takes labels
    /// away and brings them back, and never moves them along the row. What was shown `before` needs less room; what the
    /// view would cut at a side is left out.
    static Gex3DLabels place(const Gex3DScene& scene, const OrbitCamera& camera, double angle, double width,
                             double height, const Gex3DLabels& before);
};

}  // namespace vmr
