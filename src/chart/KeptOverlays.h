// The overlay series and session lines of a chart, on the GPU.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <vector>

#include "chart/Camera.h"
#include "chart/KeptList.h"
#include "chart/OverlayLists.h"
#include "gpu/FrameArena.h"
#include "market/Records.h"

namespace vmr {

/// A series whose settled part is kept on the GPU and whose end is written into each frame, so that a trade uploads
/// next to nothing. Main thread.
template <class Vertex>
class KeptSeries {
 public:
    explicit KeptSeries(Gpu& gpu) : settled_(gpu) {}

    /// Copies what differs, and tells whether anything did.
    bool set(const SeriesList<Vertex>& list);
    /// The part in view of a series relative to `origin`, with the pipeline and uniforms set last.
    void drawInView(Gpu& gpu, FrameArena& arena, const Camera& camera, const DataOrigin& origin) const;
    std::size_t size() const { return settled_.size() + end_.size(); }

 private:
    KeptList settled_;
    std::uint64_t revision_ = 0;
    std::vector<Vertex> end_;
};

/// Main thread.
class KeptOverlays {
 public:
    explicit KeptOverlays(Gpu& gpu);

    /// Copies what differs, and tells whether anything did. What is settled and the session lines are looked at when
    /// their revision is another.
    bool set(const OverlayLists& lists);

    /// Stays with the bar that the origin lies on: when bars came or went at the front of the list, all moves with
    /// them.
    void follow(std::span<const Candle> candles);

    /// Ribbons, then the paired instrument's candles.
    void draw(FrameArena& arena, const Camera& camera, double width, double height) const;

    std::size_t lineVertices() const;
    std::size_t secondVertices() const { return second_.size(); }

 private:
    /// A series with its dashes.
    struct Ribbon {
        explicit Ribbon(Gpu& gpu) : series(gpu) {}
        KeptSeries<LineVertex> series;
        std::optional<Dash> dash;
    };
    void drawRibbons(FrameArena& arena, const Camera& camera, const LineUniforms& place) const;

    Gpu& gpu_;
    std::deque<Ribbon> ribbons_;  // they do not move
    KeptList sessionLines_, sessionDashes_;
    KeptSeries<CandleVertex> second_;
    std::uint64_t sessionRevision_ = 0;
    DataOrigin origin_;            ///< of all of them
    std::int64_t originTime_ = 0;  ///< of the bar there
};

}  // namespace vmr
