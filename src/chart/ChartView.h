// The whole chart without a toolkit: renderer, screen layers in their one order, and input.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "base/Clock.h"
#include "base/SerialQueue.h"
#include "base/WeakTask.h"
#include "chart/AxisLayer.h"
#include "chart/BarLabelLayer.h"
#include "chart/CameraPort.h"
#include "chart/ChartContent.h"
#include "chart/ChartInput.h"
#include "chart/ChartPort.h"
#include "chart/ChartRenderer.h"
#include "chart/ChartSource.h"
#include "chart/EntryPill.h"
#include "chart/HudText.h"
#include "chart/MarkedStrikeLayer.h"
#include "chart/OverlayRibbons.h"
#include "chart/PillLayer.h"
#include "chart/TradingLinesLayer.h"
#include "chart/ViewportState.h"
#include "chart/WatermarkLayer.h"
#include "gpu/GlyphSource.h"
#include "market/SessionTime.h"

namespace vmr {

class ChartTrading;
class Perf;

/// Shows one `ChartContent` at a time, through the very objects that the window, the benchmarks and the tests use. It
/// draws on demand: `onNeedsFrame` asks for a frame, the host calls `record`, which tells whether one more is needed.
/// Main thread.
class ChartView final : public ChartPort, public CameraPort {
 public:
    /// All outlive the chart.
    struct Surroundings {
        Gpu& gpu;             ///< what frames are recorded into
        GlyphSource& glyphs;  ///< what texts are made of
        SessionTime& session;
        const Clock& clock;
        MainLoop& main;
        Perf* perf = nullptr;             ///< where work is timed; null for nowhere
        ChartTrading* trading = nullptr;  ///< the paper account; null for none
    };

    explicit ChartView(const Surroundings& surroundings);
    ~ChartView() override;
    ChartView(const ChartView&) = delete;
    ChartView& operator=(const ChartView&) = delete;

    enum class Need : unsigned char {
        now,
        calm,  ///< only new data of the chart on show: it may wait a moment where drawing is dear
        join,  ///< a linked chart moved this one: it belongs into the frame that the window is making
    };
    /// Something that is shown is not what it was, or moves. Never called from within `record`; may come many times
    /// before a frame does.
    std::function<void(Need)> onNeedsFrame;
    /// Bars came or went, or the camera moved, so that other things lie under the pointer. From within `record`.
    std::function<void()> onMoved;
    /// The chart on show is another one: what the hand began on the one before is over, a drag and an open menu too.
    std::function<void()> onStartOver;
    /// The linked chart's pointer is elsewhere.
    std::function<void()> onPeerCrosshair;
    /// From true to false a frame is wanted at each refresh of the screen, as `record` tells, too.
    std::function<void(bool)> onLiveRefresh;
    /// The oscillator below the chart, which another plot draws.
    struct Below {
        /// Something that it shows is not what it was; `join` from within `record`.
        std::function<void(Need)> onNeedsFrame;
        double height = 0;  ///< points; 0 where it is not shown
    };
    Below below;

    /// Where the content comes from; it must outlive the chart or be replaced before it ends. Another source starts
    /// over; null reads nothing more and trades nothing, and what was shown stays.
    void setSource(ChartSource* source);

    /// Shows this. A part whose revision is that of the last content is not looked at, and what does not differ costs
    /// no frame. Another `chart` number starts over, also when no content without bars came in between.
    void setContent(const ChartContent& content);

    /// The size that input counts by, in points; `record` sets it, too.
    void setSize(double width, double height) { input_.setSize(width, height); }

    /// What the host's own items over the chart take of it, where no text of the chart is to stand. Points.
    void setCovered(std::span<const PointRect> boxes);

    /// The host will call `record` without being asked: what changes until then is read there.
    void expectFrame() { frameAwaited_ = true; }

    /// Records one frame for a view in points, with `nowMonotonic` in seconds, and reads the source before it if that
    /// said so. True while something moves, so that another frame is needed. Without bars or area it only clears. When
    /// `glyphs` is of another generation after it, the host records again: what was drawn before the glyphs moved is
    /// stale. With `whole` what eases goes all of its way at once, for frames that come too seldom to show a motion.
    bool record(double width, double height, double pixelRatio, double nowMonotonic, bool whole = false);

    /// Milliseconds from the oldest input that the last frame shows to that frame; nothing when it shows none.
    std::optional<double> inputLagMs() const { return renderer_.inputLagMs(); }

    /// Reads what the source has said since the last frame. Input that is meant for what is open now comes after it: no
    /// frame need have come since another chart was opened.
    void catchUp() { readSource(); }

    /// The account's lines are not what they were, or anything else that this chart cannot see.
    void redraw() { askForFrame(); }
    /// Whether a drag or another gesture is under way or was a moment ago.
    bool handsOn() const { return renderer_.interacting() || input_.liveRefresh(); }

    ChartRenderer& renderer() { return renderer_; }
    ChartInput& input() { return input_; }
    const AxisLayer& axes() const { return axes_; }
    const PillLayer& pills() const { return pills_; }
    const BarLabelLayer& barLabels() const { return barLabels_; }
    /// Tells the source what the pointer is over, in a plot of this size; nothing for no pointer. Told again after the
    /// camera has moved. `timeAlone`: it is over the oscillator, at no price.
    void pointerAt(const std::optional<ChartPoint>& point, double width, double height, bool timeAlone = false);
    /// What the oscillator shows now, with the bars and the camera of this chart's last frame; nothing without a source
    /// or before a frame with bars.
    std::optional<OscInput> oscillator() const;
    /// The line of values over the chart, as of now; nothing where the source shows none.
    std::optional<HudText> hud() const;
    /// From where to where, in points from the top, the strike that the line tells of takes its row in a plot of this
    /// height; nothing where none is told or its row is out of view.
    std::optional<AxisLayer::Extent> litStrike(const HudText& hud, double height) const;
    /// What the badge of the open position says of its result as of now, and where in the last frame; nothing where
    /// that shows none. One that has outgrown its place asks for a frame.
    std::optional<EntryPill> entryPill();
    /// Where the linked chart's pointer is in this one, which may be out of view.
    std::optional<ChartPoint> peerCrosshair(double width, double height) const;

    // ChartPort
    void contentChanged() override;
    bool interacting() const override { return renderer_.interacting(); }
    std::optional<Viewport> viewport() const override { return viewport_->get(); }
    std::optional<OverlayFacts> overlayFacts() const override;
    std::optional<TradingFacts> tradingFacts() const override;
    std::optional<OscFacts> oscFacts() const override;
    CameraPort* cameraPort() override { return this; }

    // CameraPort
    const std::shared_ptr<ViewportState>& viewportState() const override { return viewport_; }
    std::optional<ChartCamera> camera() override;
    double handAt() const override { return renderer_.handAt(); }
    void mirrorView(double first, double count) override;
    void mirrorViewRel(double gapRight, double count) override;
    void mirrorPrice(double minP, double maxP) override;
    double priceLineFrac() const override { return renderer_.priceLineFrac(); }
    void setPriceLineFrac(double frac) override;
    ViewSetup viewSetup() override;
    void applyView(const ViewSetup& setup, bool byHand) override;
    void showPeerCrosshair(const std::optional<ChartSpot>& spot) override;

 private:
    /// What of the content on show the next one is compared with.
    struct Shown {
        std::uint64_t chart = 0;
        double timeframe = 1;
        ChartContent::Revisions revisions;
        OverlayStyle style;
        HudMetrics totals;
    };
    void askForFrame();
    void askForOscillator();
    void readSource();
    bool onlyDataDiffers(const ChartContent& content) const;
    void startOver();
    void setRoot(std::string_view root);
    void showNames(const ChartContent& content, bool newWalls);
    void makeRibbons(const ChartContent& content);
    void setBars(std::span<const Candle> candles);
    template <class Move>
    void moveForPeer(Move move);

    MainLoop& main_;
    ChartRenderer renderer_;
    OverlayRibbons ribbons_;
    WatermarkLayer watermark_;
    BarLabelLayer barLabels_;
    TradingLinesLayer tradingLines_;
    MarkedStrikeLayer markedStrike_;
    PillLayer pills_;
    AxisLayer axes_;
    MarkedStrikeTagLayer markedTag_;
    TradingTagsLayer tradingTags_;
    ChartInput input_;
    std::shared_ptr<ViewportState> viewport_ = std::make_shared<ViewportState>();
    WeakTask whileThere_;
    ChartSource* source_ = nullptr;
    std::optional<Shown> shown_;  ///< nothing: all of the next content is new
    bool contentDirty_ = false;   ///< the source said that its content changed
    bool readPosted_ = false;     ///< the end of this turn reads it
    bool ribbonsDue_ = false;     ///< of the source's newest content, before the next frame
    bool onlyData_ = false;       ///< what changes is new data of the chart on show
    bool frameAwaited_ = false;   ///< a frame is asked for and will read the content
    bool calmFrameAwaited_ = false;
    bool recording_ = false;
    bool barsMoved_ = false;            ///< bars came or went since the last frame
    bool forPeer_ = false;              ///< what asks for a frame is a linked chart
    std::optional<ChartSpot> pointer_;  ///< what the pointer is over
    std::optional<ChartSpot> peerSpot_;
    std::vector<PointRect> covered_;
};

}  // namespace vmr
