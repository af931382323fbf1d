// Another plot beside the chart: what one costs that follows the chart's camera.
#pragma once

#include <array>
#include <cmath>
#include <memory>
#include <optional>
#include <span>

#include "base/Signal.h"
#include "chart/ViewportState.h"
#include "gpu/FrameArena.h"
#include "ui/gpu/FrameItem.h"

namespace vmr::test {

/// A line at every fifth bar of the chart that comes to the middle of the view.
class FollowerItem final : public FrameItem {
 public:
    FollowerItem(QQuickItem* parent, std::shared_ptr<ViewportState> camera)
        : FrameItem(parent), camera_(std::move(camera)) {
        // within the chart's recording: this item is polished after it, for the same frame
        moved_ = camera_->changed.connect([this] { joinFrame(); });
    }

    /// The camera of the frame that was recorded last.
    const std::optional<Viewport>& shows() const { return shows_; }

 protected:
    bool record(Gpu& gpu, QSizeF size, double pixelRatio, double) override {
        shows_ = camera_->get();
        gpu.beginFrame(size.width(), size.height(), pixelRatio);
        gpu.clear({0.1F, 0.1F, 0.1F, 1.0F});
        if (shows_) {
            arena_.beginFrame();
            const double bar = std::ceil((shows_->first + shows_->count / 2) / 5) * 5;
            const auto x = static_cast<float>(2 * (bar - shows_->first) / shows_->count - 1);
            constexpr Rgba white{1, 1, 1, 1};
            const std::array<ChartVertex, 2> line{{{{x, -1}, white}, {{x, 1}, white}}};
            const auto list = arena_.uploadDyn(std::span<const ChartVertex>(line));
            gpu.setPipeline(Pipeline::flat);
            gpu.setUniforms(std::array{1.0F, 0.0F, 1.0F, 0.0F});
            gpu.draw(Primitive::lines, list->buffer, list->offset, list->count);
        }
        gpu.endFrame();
        return false;
    }

 private:
    std::shared_ptr<ViewportState> camera_;
    FrameArena arena_{gpu()};
    std::optional<Viewport> shows_;
    Connection moved_;
};

}  // namespace vmr::test
