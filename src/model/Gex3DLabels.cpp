#include "model/Gex3DLabels.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>
#include <optional>
#include <tuple>

namespace vmr {

namespace {

constexpr double readable = 9, largest = 2.5;  // points of a label's size where the camera looks at; of its own size
constexpr double keptGap = 0, newcomersGap = 0.3;  // between labels, in sizes

struct Box {
    double left = 0, top = 0, right = 0, bottom = 0;
    bool meets(const Box& other, double gap) const {
        return left < other.right + gap && other.left < right + gap && top < other.bottom + gap &&
               other.top < bottom + gap;
    }
};

ScenePoint along(const ScenePoint& from, const ScenePoint& direction, double by) {
    return {from[0] + direction[0] * by, from[1] + direction[1] * by, from[2] + direction[2] * by};
}

// How soon a label of a row is placed: the first one, then those whose place in the row has the most factors of two.
int rank(std::size_t inRow) { return inRow == 0 ? 64 : std::countr_zero(inRow); }

}  // namespace

Gex3DLabels Gex3DLabels::place(const Gex3DScene& scene, const OrbitCamera& camera, double angle, double width,
                               double height, const Gex3DLabels& before) {
    Gex3DLabels out{1, std::vector<bool>(scene.labels.size(), true)};
    if (!(width > 0) || !(height > 0)) return out;
    const double field = OrbitCamera::fieldOfView(width, height) * std::numbers::pi / 180;
    const double pointsAUnit = height / (2 * std::tan(field / 2) * camera.distance());
    out.scale = std::clamp(readable / (Gex3DScene::labelSize * pointsAUnit), 1.0, largest);
    const double size = Gex3DScene::labelSize * out.scale;
    const SceneRay axes = camera.rayThrough(width / 2, height / 2, width, height).inTurned(angle);
    const auto onScreen = [&](const ScenePoint& p) { return camera.project(turned(p, angle), width, height); };

    std::vector<std::tuple<int, std::size_t>> order;  // the earlier placed ones first
    std::size_t inRow = 0;
    for (std::size_t i = 0; i < scene.labels.size(); ++i, ++inRow) {
        if (i > 0 && scene.labels[i].place[2] != scene.labels[i - 1].place[2] && !scene.labels[i - 1].outside)
            inRow = 0;  // the spot's own, the strikes, the expirations
        order.emplace_back(-rank(inRow), i);
    }
    std::sort(order.begin(), order.end());
    std::vector<Box> taken;
    for (const auto& [late, i] : order) {
        const SceneLabel& label = scene.labels[i];
        const double half = label.halfWidth() * out.scale;
        const ScenePoint middle = along(label.place, axes.right, label.outside ? half * axes.right[0] : 0);
        const auto at = onScreen(middle), side = onScreen(along(middle, axes.right, half)),
                   top = onScreen(along(middle, axes.up, size / 2));
        out.shown[i] = at && side && top;
        if (!out.shown[i]) continue;
        const double w = (*side)[0] - (*at)[0], h = (*at)[1] - (*top)[1];
        const Box box{(*at)[0] - w, (*at)[1] - h, (*at)[0] + w, (*at)[1] + h};
        const bool kept = before.shown.size() == out.shown.size() && before.shown[i];
        const double gap = (kept ? keptGap : newcomersGap) * 2 * h;
        const bool whole = box.left >= -h && box.right <= width + h;
        out.shown[i] =
            whole && std::none_of(taken.begin(), taken.end(), [&](const Box& one) { return box.meets(one, gap); });
        if (out.shown[i]) taken.push_back(box);
    }
    return out;
}

}  // namespace vmr
