#include "model/Gex3DView.h"

#include <cmath>
#include <numbers>
#include <utility>

namespace vmr {

bool Gex3DView::take(const std::optional<Gex3DData>& data) {
    std::string id = dataID(data);
    if (id == lastDataID_) return false;
    lastDataID_ = std::move(id);
    data_ = data;
    build();
    return true;
}

const Gex3DData& Gex3DView::shown() const {
    static const Gex3DData none;
    return data_ ? *data_ : none;
}

void Gex3DView::startOver() {
    hidden_.clear();
    take(std::nullopt);
}

void Gex3DView::setHidden(const std::string& expiration, bool hidden) {
    const bool changed = hidden ? hidden_.insert(expiration).second : hidden_.erase(expiration) > 0;
    if (changed) build();
}

void Gex3DView::build() {
    scene_ = data_ ? Gex3DScene::build(*data_, hidden_) : Gex3DScene();
    ++revision_;
    look();
}

void Gex3DView::advance(double seconds) {
    if (!autoRotate) return;
    angle_ = std::remainder(angle_ + turnsBy * seconds, 2 * std::numbers::pi);
    look();
}

void Gex3DView::home() {
    camera.home();
    angle_ = 0;
    look();
}

void Gex3DView::setPointer(const std::optional<std::array<double, 2>>& pointer) {
    pointer_ = pointer;
    point();
}

void Gex3DView::look() {
    labels_ = Gex3DLabels::place(scene_, camera, angle_, area[2], area[3], labels_);
    point();
}

void Gex3DView::point() {
    over_.reset();
    const auto& [x, y, width, height] = area;
    if (!pointer_ || !(width > 0 && height > 0)) return;
    const auto& [px, py] = *pointer_;
    if (px >= 0 && px <= width && py >= 0 && py <= height)
        over_ = scene_.barHit(camera.rayThrough(px, py, width, height).inTurned(angle_), labels_.scale, labels_.shown);
}

std::optional<std::string> Gex3DView::tooltip() const {
    return over_ ? tooltipOf(scene_.bars[*over_].name) : std::nullopt;
}

std::optional<std::array<double, 2>> Gex3DView::placeOf(const Gex3DBar& bar) const {
    constexpr double belowTop = 0.45;  // of its height over its middle: the part that other bars hide last
    ScenePoint p = bar.box.place;
    p[1] += bar.box.size[1] * belowTop;
    return camera.project(turned(p, angle_), area[2], area[3]);
}

}  // namespace vmr
