// The per-strike picture at the edges of the chart: GEX, DEX and second-source bars, flow and open-interest waves.
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "chart/RenderConfig.h"
#include "gpu/FrameArena.h"
#include "market/Records.h"

namespace vmr {

/// What the edge layers of a frame are made of.
struct EdgeInput {
    std::span<const StrikeRow> strikes;
    double etfRatio = 1;               ///< strike to chart price; at or below 0 or not finite: nothing is drawn
    std::optional<double> flipStrike;  ///< in strike units
    std::span<const StrikeRow> secStrikes;
    double secRatio = 1;
    const RenderConfig& config;
    double viewW = 0, viewH = 0;     ///< points
    double yScale = 1, yOffset = 0;  ///< price to clip space
    bool snapLerps = false;          ///< the camera moved in this frame: places jump, so that nothing trails behind
    double alphaX = 1, alphaY = 1;   ///< shares of the way that this frame eases
    double pixelRatio = 1;
};

/// What the edge layers of a frame came to, all in clip space, drawn with identity uniforms, in this order.
struct EdgeFrame {
    struct Wave {
        std::optional<DynUpload> fill;    ///< flat quads
        std::optional<DynUpload> stroke;  ///< ribbons
        std::optional<DynUpload> dots;    ///< markers
    };
    std::array<Wave, 4> waves;      ///< flow of calls or net, flow of puts, open interest of calls and puts
    std::optional<DynUpload> bars;  ///< boxes
    bool animating = false;         ///< a place or width has not arrived yet
};

struct EdgeDisplays;

/// Keeps what is shown of each strike and eases it in pixels. In a view of another size all is in its place at once, as
/// bars and axes are. Main thread.
class EdgeLayers {
 public:
    EdgeLayers();
    ~EdgeLayers();
    EdgeLayers(const EdgeLayers&) = delete;
    EdgeLayers& operator=(const EdgeLayers&) = delete;

    /// One step, written into `arena`. No allocation once its memory has grown.
    EdgeFrame step(const EdgeInput& input, FrameArena& arena);

    /// Forgets what was shown, so that nothing eases from it.
    void clear();

    /// The labels of the last step; valid until the next.
    std::span<const BarLabel> labels() const;

    /// What is shown of each strike; see StrikeDisplay.h.
    const EdgeDisplays& displays() const;

    /// An amount in short: "-2.5B" and "1.2M" with one decimal, else thousands without, as in "1k" for 999.
    static std::string fmtFlow(double v);

 private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace vmr
