// Draws one chart: owns the bars it shows, their geometry on the GPU, the eased values and the camera.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/Clock.h"
#include "chart/Camera.h"
#include "chart/Easing.h"
#include "chart/EdgeLayers.h"
#include "chart/FormingBar.h"
#include "chart/KeptCandles.h"
#include "chart/KeptMarkers.h"
#include "chart/KeptOverlays.h"
#include "chart/KeptWalls.h"
#include "chart/RenderConfig.h"
#include "chart/ScreenLayer.h"
#include "gpu/FrameArena.h"
#include "gpu/Gpu.h"
#include "gpu/Vertices.h"
#include "market/Records.h"

namespace vmr {

class Perf;

/// The renderer of a pane. Main thread only, frames included.
///
/// Geometry in data space (x = bar, y = price) is built once and moved by uniforms alone, so a pan or zoom rebuilds
/// nothing; only the forming bar, the price line and the strike bars and waves at the edges are made anew in each
/// frame. Vertices are stored relative to an origin near the last bar, which the uniforms fold back in (see
/// `DataOrigin`).
///
/// The host draws on demand: `onNeedsDisplay` asks for a frame, and `drawFrame` tells whether one more is needed.
/// Arenas go round in three, so the host must never read a frame's arena more than two frames later.
class ChartRenderer {
 public:
    static constexpr Rgba clearColor{0.04F, 0.04F, 0.04F, 1.0F};

    /// `gpu` and `clock` must outlive the renderer.
    ChartRenderer(Gpu& gpu, const Clock& clock);
    ~ChartRenderer();
    ChartRenderer(const ChartRenderer&) = delete;
    ChartRenderer& operator=(const ChartRenderer&) = delete;

    /// Asks the host for a frame. May be called many times before one comes, never from inside a frame.
    std::function<void()> onNeedsDisplay;

    /// Where frames and rebuilds are timed; may be null.
    Perf* perf = nullptr;

    /// Called when `setInteracting` goes from true to false.
    std::function<void()> onInteractionEnd;

    /// The bars, ascending by time; copied. Compares only the ends of the lists: an edit deep in the history shows when
    /// the next bar comes. Bars that come or go before those in view do not move the picture.
    void setCandles(std::span<const Candle> candles);
    void setRenderConfig(const RenderConfig& config);

    // What is drawn with the bars; copied, and without effect when nothing differs.
    void setLevels(std::span<const PriceLevel> levels);  ///< walls, from the session's start to the right end
    /// The strike rows, the factor from strike to chart price (kept when it is not finite or not above 0) and the
    /// strike where gamma flips.
    void setStrikes(std::span<const StrikeRow> rows, double etfRatio, std::optional<double> flipStrike);
    /// The second source's; a ratio that is 0 or not finite keeps the old one.
    void setSecStrikes(std::span<const StrikeRow> rows, double ratio);
    /// The markers, ascending by minute. Compares counts and last elements only.
    void setBubbles(std::span<const BubblePt> bubbles, std::span<const TrianglePt> triangles);

    /// The overlay ribbons and the paired instrument's candles; replaces what was there. What differs is copied to the
    /// GPU, and asks for a frame.
    void setOverlayGeometry(const OverlayLists& lists);

    /// Shows no chart: bars, overlays, markers and what eases of the one before are gone, the camera waits for first
    /// bars.
    void startOver();

    /// Draws `layer` in every frame after those added before; it must outlive the renderer's frames.
    void addScreenLayer(ScreenLayer& layer) { screenLayers_.push_back(&layer); }

    /// Records one frame for a view in points. `nowMonotonic` in seconds. True while something is still moving, so that
    /// another frame is needed. Without bars, or in a view without area, the frame only clears.
    bool drawFrame(double width, double height, double pixelRatio, double nowMonotonic, bool whole = false);

    // Input. Nothing happens without bars, nor to the price before a frame has shown them; arguments that are not
    // finite are ignored.
    void pan(double byCandles);     ///< positive shows later bars
    void zoom(double factor);       ///< above 1 shows more bars; the right edge stays
    void zoomPrice(double factor);  ///< above 1 shows more prices; ends the automatic range; nothing while pinned
    void panByPrice(double dyPixels, double viewHeight);  ///< positive shows higher prices; while pinned moves the pin
    // A partner pane's camera.
    void mirrorView(double first, double count);
    void mirrorViewRel(double gapRight, double count);
    void mirrorPrice(double minP, double maxP);
    /// Finite pins the last close at this share of the height from below; NaN ends it.
    void setPriceLineFrac(double frac);
    double priceLineFrac() const { return camera_.priceLineFrac; }
    /// Shows a view as it was saved. `byHand`: a person asked for it just now.
    void applyView(const ViewSetup& setup, bool byHand);
    /// True hands the price range back to the renderer, as a double click does.
    void setAutoY(bool on);
    void setInteracting(bool on);
    /// Asks for a frame.
    void redraw() { needsDisplay(); }
    bool interacting() const { return interacting_; }

    // What is shown.
    const Camera& camera() const { return camera_; }
    std::span<const Candle> candles() const { return candles_; }
    /// Whether a frame has shown bars of this chart, so that its prices have places.
    bool showsBars() const { return !candles_.empty() && camera_.settled(); }
    double rightEdgeFirst() const { return camera_.rightEdgeFirst(candles_.size()); }
    double dispClose() const { return forming_.close(); }
    double alphaX() const { return easing_.alphaX; }
    double alphaY() const { return easing_.alphaY; }
    double alphaClose() const { return easing_.alphaClose; }
    /// When input moved the camera last, monotonic seconds; below 0 for never.
    double handAt() const { return input_.lastAt; }
    /// Milliseconds from the oldest input of the last frame to that frame; nothing when no input led to it.
    std::optional<double> inputLagMs() const { return input_.lagMs; }
    /// Where the last frame's camera is, if it moved in that frame.
    const std::optional<Viewport>& movedTo() const { return movedTo_; }
    /// Whether ribbons of overlay series or session lines are there.
    bool hasOverlays() const { return overlays_.lineVertices() > 0; }
    /// What a benchmark draws: counts of bars, strikes, markers and overlay vertices.
    std::string benchDataSummary() const;

    /// Start of the session of the last bar, in bars; 0 without bars.
    std::size_t currentSessionStartIndex() const;
    /// Session start as hhmm.
    int sessionHHMM = 1800;

 private:
    /// The strikes of both sources, and what brings them to the price axis.
    struct Strikes {
        std::vector<StrikeRow> rows, secRows;
        double etfRatio = 1, secRatio = 1;
        std::optional<double> flip;
    };
    /// From the oldest input that no frame has shown yet to the frame that does, and the newest input.
    struct InputTimes {
        std::optional<double> at;  ///< monotonic
        std::optional<double> lagMs;
        double lastAt = -1;  ///< monotonic
        void endAt(double now);
    };
    /// What a frame makes anew.
    struct Geometry {
        FormingBar::Lists forming;
        EdgeFrame edges;
        Uniforms candleUniforms;
        bool animating = false;
    };

    void needsDisplay();
    void noteInput();
    void barsMoved();

    // The frame (ChartFrame.cpp)
    bool drawChart(double width, double height, double pixelRatio);
    void rebuildKept();
    bool buildGeometry(double viewW, double viewH, double pixelRatio, Geometry& geometry);
    EdgeFrame stepEdges(double viewW, double viewH, double pixelRatio);

    // The layers in their order (ChartLayers.cpp)
    void encodeLayers(const Geometry& geometry, double width, double height);
    void encodeEdges(const EdgeFrame& edges, double width, double height);
    void drawDyn(Primitive primitive, const std::optional<DynUpload>& list);

    Gpu& gpu_;
    const Clock& clock_;
    FrameArena arena_;
    std::vector<ScreenLayer*> screenLayers_;
    std::vector<Candle> candles_;
    Strikes strikes_;
    RenderConfig renderCfg_;
    Camera camera_;
    DataOrigin origin_;  ///< of all data-space geometry but the overlays'; moves only when all of it is rebuilt
    KeptCandles bars_;
    KeptWalls walls_;
    KeptMarkers markers_;
    KeptOverlays overlays_;
    FormingBar forming_;
    EdgeLayers edges_;
    Easing easing_;
    InputTimes input_;
    std::optional<Viewport> movedTo_;
    bool interacting_ = false;
};

}  // namespace vmr
