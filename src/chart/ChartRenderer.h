// Draws one chart: owns the bars it shows, their geometry on the GPU, the eased values and the camera.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/Clock.h"
#include "chart/Camera.h"
#include "chart/EdgeLayers.h"
#include "chart/OverlayLists.h"
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
    static constexpr double candleLerp = 0.3;  ///< easing of the forming close per frame of 60 Hz
    static constexpr double lerpX = 0.25;      ///< of widths and x positions
    static constexpr double lerpY = 0.2;       ///< of y positions
    static constexpr Rgba clearColor{0.04F, 0.04F, 0.04F, 1.0F};
    static constexpr Rgba priceLineColor{1.0F, 1.0F, 1.0F, 0.38F};

    using Post = std::function<void(std::function<void()>)>;

    /// `gpu` and `clock` must outlive the renderer. `post` runs a task later on the main thread, never at once; it may
    /// run tasks after the renderer is gone.
    ChartRenderer(Gpu& gpu, const Clock& clock, Post post);
    ~ChartRenderer();
    ChartRenderer(const ChartRenderer&) = delete;
    ChartRenderer& operator=(const ChartRenderer&) = delete;

    /// Asks the host for a frame. May be called many times before one comes, never from inside a frame.
    std::function<void()> onNeedsDisplay;

    /// The camera of a frame in which it moved; posted, at most once a turn, with the newest values.
    std::function<void(double first, double count, double minP, double maxP)> onViewport;

    /// The labels beside the strike bars when they are not what they were; posted, at most 120 times a second while
    /// something moves. Draw no frame from within.
    std::function<void(const std::vector<BarLabel>&)> onBarLabels;

    /// Where frames and rebuilds are timed; may be null.
    Perf* perf = nullptr;

    /// Called when `setInteracting` goes from true to false.
    std::function<void()> onInteractionEnd;

    /// The bars, ascending by time; copied. Compares only the ends of the lists: an edit deep in the history shows when
    /// the next bar comes. Bars that went away at the front slide out without moving the picture.
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
    bool drawFrame(double width, double height, double pixelRatio, double nowMonotonic);

    // Input. Nothing happens without bars; arguments that are not finite are ignored.
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
    /// True hands the price range back to the renderer, as a double click does.
    void setAutoY(bool on);
    void setInteracting(bool on);
    /// Asks for a frame.
    void redraw() { needsDisplay(); }
    bool interacting() const { return interacting_; }

    // What is shown.
    const Camera& camera() const { return camera_; }
    std::span<const Candle> candles() const { return candles_; }
    double rightEdgeFirst() const { return camera_.rightEdgeFirst(candles_.size()); }
    double dispClose() const { return dispClose_; }
    double alphaX() const { return alphaX_; }
    double alphaY() const { return alphaY_; }
    double alphaClose() const { return alphaClose_; }
    /// Milliseconds from the oldest input of the last frame to that frame; nothing when no input led to it.
    std::optional<double> inputLagMs() const { return inputLagMs_; }
    /// Where the last frame's camera is, if it moved in that frame.
    const std::optional<Viewport>& movedTo() const { return movedTo_; }
    /// Whether ribbons of overlay series or session lines are there.
    bool hasOverlays() const;
    /// What a benchmark draws: counts of bars, strikes, markers and overlay vertices.
    std::string benchDataSummary() const;

    /// Start of the session of the last bar, in bars; 0 without bars.
    std::size_t currentSessionStartIndex() const;
    /// Session start as hhmm.
    int sessionHHMM = 1800;

 private:
    /// What a block of a retained list spans: bars relative to the list's origin, and points beyond them.
    struct Reach {
        float low = 0, high = 0, points = 0;
    };
    struct Retained {
        GpuBuffer buf = 0;
        std::size_t n = 0;
        std::size_t stride = 0;     ///< bytes of a vertex
        std::vector<Reach> blocks;  ///< of `blockVertices` each, for lists of several; else it is drawn whole
    };
    static constexpr std::size_t blockVertices = 1152;  ///< whole shapes of 3, 6, 12, 24 and 36 vertices
    /// What a frame makes anew.
    struct Geometry {
        std::optional<DynUpload> priceLine, formingTris, formingBorder, formingWicks;
        std::optional<DynUpload> edgeTris, waveFill, waveStroke;
        Uniforms candleUniforms;
        bool animating = false;
    };
    struct Delivery;

    void needsDisplay();
    void noteInput();
    void stepTime(double now);
    void barsMoved();

    // What is kept (ChartRetained.cpp)
    void rebuildRetained();
    void rebuildCandleGeometry();
    void rebuildWallGeometry();
    void rebuildMarkers();
    template <class Vertex>
    void retain(Retained& retained, const std::vector<Vertex>& list);
    template <class Vertex>
    bool replace(Retained& retained, const std::vector<Vertex>& list);

    // What a frame makes anew (ChartFrame.cpp)
    bool buildGeometry(double viewW, double viewH, Geometry& geometry);
    void buildFormingCandle(double viewH, Geometry& geometry);
    void buildPriceLine(double viewW, Geometry& geometry);
    void buildEdges(double viewW, double viewH, Geometry& geometry);
    bool easeClose();
    bool drawChart(double width, double height, double pixelRatio);

    // The layers in their order (ChartLayers.cpp)
    void encodeLayers(const Geometry& geometry, double width, double height);
    void encodeMarkers(const Uniforms& camera, double width, double height);
    void encodeEdges(const Geometry& geometry);
    void encodeOverlays(double width, double height);
    void drawDyn(Primitive primitive, const std::optional<DynUpload>& list);
    void drawRetained(const Retained& retained, Primitive primitive = Primitive::triangles);
    void drawInView(const Retained& retained, const DataOrigin& origin);
    void setFlat(const Uniforms& uniforms);
    void setWithView(Pipeline pipeline, const LineUniforms& uniforms);

    void publishViewport();
    void publishBarLabels(bool animating);

    Gpu& gpu_;
    const Clock& clock_;
    std::unique_ptr<Delivery> delivery_;
    FrameArena arena_;
    std::vector<ScreenLayer*> screenLayers_;
    std::vector<Candle> candles_;
    std::vector<PriceLevel> levels_;
    std::vector<StrikeRow> strikes_, secStrikes_;
    double etfRatio_ = 1, secRatio_ = 1;
    std::optional<double> flipStrike_;
    std::vector<BubblePt> bubblePts_;
    std::vector<TrianglePt> trianglePts_;
    RenderConfig renderCfg_;
    Camera camera_;
    EdgeLayers edges_;
    DataOrigin origin_;  ///< of all data-space geometry but the overlays'; moves only when all of it is rebuilt
    Retained candleTris_, candleWicks_, candleBorders_, walls_, markers_;
    Retained overlayLines_, sessionLines_, second_, secondBorders_;
    std::uint64_t sessionRevision_ = 0;
    DataOrigin overlayOrigin_;  ///< of the four above
    bool staticDirty_ = true, wallsDirty_ = true, markersDirty_ = true;
    bool interacting_ = false;
    double dispClose_ = std::numeric_limits<double>::quiet_NaN();
    double alphaX_ = lerpX, alphaY_ = lerpY, alphaClose_ = candleLerp;
    double lastAnimTime_ = 0;
    double lastLabelPublish_ = -std::numeric_limits<double>::infinity();  ///< monotonic
    std::vector<BarLabel> lastBarLabels_;
    std::optional<double> inputAt_, inputLagMs_;
    std::optional<Viewport> movedTo_;
    std::vector<ChartVertex> flatScratch_;
    std::vector<LineVertex> ribbonScratch_;
    std::vector<MarkerVertex> markerScratch_;
};

}  // namespace vmr
