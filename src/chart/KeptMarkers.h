// The GEX bubbles and HF triangles of a chart, on the GPU.
#pragma once

#include <span>
#include <vector>

#include "chart/Camera.h"
#include "chart/KeptList.h"
#include "chart/Markers.h"
#include "chart/RenderConfig.h"
#include "gpu/Vertices.h"
#include "market/Records.h"

namespace vmr {

/// Made anew when the markers, the bars, the ratio or their look changed. Main thread.
class KeptMarkers {
 public:
    explicit KeptMarkers(Gpu& gpu) : gpu_(gpu), discs_(gpu), triangles_(gpu, Primitive::triangles) {}

    /// Copies the markers, ascending by minute, and tells whether they are others; compares counts and last elements.
    bool set(std::span<const BubblePt> bubbles, std::span<const TrianglePt> triangles);
    /// Forgets them.
    void clear();

    /// Whether two settings show markers alike.
    static bool looksAlike(const RenderConfig& a, const RenderConfig& b);

    void make(std::span<const Candle> candles, double etfRatio, const RenderConfig& config, const DataOrigin& origin);
    void draw(const Camera& camera, const DataOrigin& origin, double width, double height) const;

    std::size_t bubbles() const { return bubblePts_.size(); }
    std::size_t triangles() const { return trianglePts_.size(); }
    bool dirty = true;

 private:
    Gpu& gpu_;
    std::vector<BubblePt> bubblePts_;
    std::vector<TrianglePt> trianglePts_;
    KeptList discs_, triangles_;
    Markers::Lists lists_;
};

}  // namespace vmr
