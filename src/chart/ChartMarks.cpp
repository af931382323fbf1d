#include "chart/ChartMarks.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "chart/ChartView.h"
#include "chart/OscillatorPane.h"
#include "gpu/GpuPart.h"

namespace vmr {

namespace {

// Samples are parts of one view, ten points a bar and the last bar in the middle, or of a wider one where strikes are
// shown, whose bars are wider there.
constexpr double viewWidth = 560, wideView = 1000, viewHeight = 300;
constexpr std::size_t barCount = 60;
constexpr double firstBar = 31, barsAcross = 56, middlePrice = 24500, reach = 87;  // of prices in a sample
constexpr double ratio = 50;                                                       // of strikes
constexpr std::int64_t firstTime = 1781098200;                                     // a trading day's 09:30 in New York
constexpr double leastOpacity = 0.4;

double wave(double i) { return std::round(44 * std::sin(i * 0.33) + 18 * std::sin(i * 1.9)); }

struct Scene {
    RenderConfig look;
    OverlayStyle style;
    double left = 194, top = 0;  // of the part that is shown
    double width = viewWidth, first = firstBar;
    std::vector<Candle> candles;
    OverlaySet series;
    std::vector<OverlayLine> lines;
    std::vector<PriceLevel> walls;
    std::vector<StrikeRow> strikes, secStrikes;
    std::optional<double> flip, marked;
    std::vector<BubblePt> bubbles;
    std::vector<TrianglePt> triangles;
    TradingLines account;
    OscLines oscLines;
    std::optional<OscContent> oscillator;  ///< shown in place of the chart; without its lines

    Scene(const RenderConfig& chosen, const OverlayStyle& chosenStyle) : look(chosen), style(chosenStyle) {
        for (bool* shown : {&look.gexEnabled, &look.dexEnabled, &look.bubblesEnabled, &look.trianglesEnabled,
                            &look.waveEnabled, &look.wallsEnabled, &look.oiEnabled, &look.countdown})
            *shown = false;
        look.gexLabels = look.dexLabels = true;
        for (float* one :
             {&look.gexOpacity, &look.bubbleOpacity, &look.triangleOpacity, &look.waveOpacity, &look.oiOpacity})
            *one = std::max(*one, static_cast<float>(leastOpacity));
        for (double* one : {&style.hfLineOpacity, &style.lineOpacity}) *one = std::max(*one, leastOpacity);
        style.showOpen = style.showPrev = style.showLevels = true;
        for (std::size_t i = 0; i < barCount; ++i) {
            const auto at = static_cast<double>(i);
            const double open = middlePrice + wave(at - 1), close = middlePrice + wave(at);
            candles.push_back({firstTime + static_cast<std::int64_t>(i) * 60, open, std::max(open, close) + 7,
                               std::min(open, close) - 6, close, 100});
        }
    }

    template <class Add>
    void eachBar(Add add) const {
        for (std::size_t i = 0; i < barCount; ++i) add(static_cast<double>(i), candles[i]);
    }
    static std::vector<OvPoint> line(double apart, double swing) {
        std::vector<OvPoint> out;
        for (std::size_t i = 0; i < barCount; ++i)
            out.push_back(
                {static_cast<double>(i), middlePrice + apart + swing * std::sin(static_cast<double>(i) * 0.2)});
        return out;
    }
    /// So many to either side of the middle, `step` strikes apart; `turn` tells how fast they grow and shrink.
    static std::vector<StrikeRow> rows(int eachSide, double step, double turn) {
        std::vector<StrikeRow> out;
        for (int i = -eachSide; i <= eachSide; ++i) {
            const double size = 3 + 2 * std::sin(i * turn), other = 2.5 + 1.5 * std::cos(i * turn * 0.7);
            out.push_back({.strike = middlePrice / ratio + i * step,
                           .callGex = i > 0 ? size : size * 0.3,
                           .putGex = i > 0 ? other * 0.2 : other,
                           .callDex = i > 0 ? size : size * 0.3,
                           .putDex = i > 0 ? -other * 0.2 : -other,
                           .callHf = size,
                           .putHf = -other,
                           .callOI = size,
                           .putOI = other});
        }
        return out;
    }
    /// The right end of an oscillator with three series from `firstSeries` on.
    void showOscillator(std::size_t firstSeries) {
        left = viewWidth - MarkSamples::width;
        oscillator.emplace().shown = {};
        for (std::size_t k = 0; k < 3; ++k) {
            std::vector<OscPt>& points = oscLines.*oscSeries[firstSeries + k].points;
            oscillator->shown[firstSeries + k] = true;
            const auto part = static_cast<double>(k);
            eachBar([&](double i, const Candle& bar) {
                points.push_back({bar.time, 90 - 90 * part + 55 * std::sin(i * 0.3 + 2 * part)});
            });
        }
    }
    /// The end of the plot, or its beginning.
    void showStrikes(int eachSide, double step, double turn, bool atRight = true) {
        width = wideView;
        left = atRight ? PlotArea{wideView, 0}.right() - MarkSamples::width : 0;
        strikes = rows(eachSide, step, turn);
    }
};

constexpr double atPills = 232;

void showBars(Scene& scene) { scene.left = 104; }

void showForming(Scene& scene) {
    scene.candles.back().close = scene.candles.back().open + 26;
    scene.candles.back().high = scene.candles.back().open + 34;
}

void showSecond(Scene& scene) {
    scene.left = 214;
    scene.eachBar([&](double i, const Candle& bar) {
        const auto other = [](double price) { return price - 30; };
        scene.series.secondCandles.push_back(
            {i, other(bar.open), other(bar.high), other(bar.low), other(bar.close), 6950.25});
    });
}

void showVwap(Scene& scene) {
    scene.left = atPills;
    scene.series.vwapMain = Scene::line(20, 14);
}

void showVwapNY(Scene& scene) {
    scene.left = atPills;
    scene.series.vwapNY = Scene::line(-20, 14);
}

void showAverages(Scene& scene) {
    scene.left = 144;
    scene.series.ema1 = Scene::line(16, 20);
    scene.series.ema2 = Scene::line(-14, 30);
}

void showFlowLine(Scene& scene) {
    scene.left = atPills;
    scene.eachBar([&](double i, const Candle&) {
        const double flow = 40 * std::sin(i * 0.21);
        scene.series.hfLine.push_back({i, middlePrice + flow, flow >= 0, middlePrice, flow * 400});
    });
}

void showVix(Scene& scene) {
    scene.left = atPills;
    scene.series.vixLine = Scene::line(8, -40);
    scene.series.vixSpot = 16.62;
}

void showPast(Scene& scene) {
    showVwap(scene);
    scene.first = 0;
    scene.left = 248;
}

void showBubbles(Scene& scene) {
    scene.left = 104;
    scene.look.bubblesEnabled = true;
    for (std::size_t i = 40; i < 58; ++i)
        for (int rank = 0; rank < 3; ++rank) {
            const double size = 0.3 + 0.6 * std::abs(std::sin(static_cast<double>(i) * 0.8 + rank));
            for (const double side : {0.8, -0.8})
                scene.bubbles.push_back({scene.candles[i].time, middlePrice / ratio + side, size, side > 0, rank});
        }
}

void showTriangles(Scene& scene) {
    scene.left = 104;
    scene.look.trianglesEnabled = true;
    for (std::size_t i = 40; i < 58; ++i)
        for (const double side : {0.8, -0.8})
            for (int stack = 0; stack < 3; ++stack)
                scene.triangles.push_back({scene.candles[i].time, middlePrice / ratio + side,
                                           side * (0.4 + std::abs(std::sin(static_cast<double>(i)))), 1.2});
}

void showFlowWave(Scene& scene) {
    scene.look.waveEnabled = true;
    scene.showStrikes(9, 0.5, 0.9);
}

void showInterestWave(Scene& scene) {
    scene.look.oiEnabled = true;
    scene.showStrikes(9, 0.5, 0.9);
}

void showGammaBars(Scene& scene) {
    scene.look.gexEnabled = true;
    scene.showStrikes(2, 1, 1.3);
}

void showStrikeNames(Scene& scene) {
    showGammaBars(scene);
    scene.strikes.erase(scene.strikes.begin() + 3);  // room for the names
    scene.strikes[2].putGex += 6;
    scene.strikes[1].putGex = 0.2;
    scene.flip = middlePrice / ratio - 1;
    scene.strikes.erase(scene.strikes.begin());
}

void showSecondBars(Scene& scene) {
    showGammaBars(scene);
    scene.secStrikes = scene.strikes;
    scene.strikes = {};
}

void showDeltaBars(Scene& scene) {
    scene.look.dexEnabled = true;
    scene.showStrikes(2, 1, 1.3, false);
}

void showWalls(Scene& scene) {
    scene.look.wallsEnabled = true;
    scene.walls = {{{}, "Call Wall 491", middlePrice + 50, 0.149, 0.651, 0.604},
                   {{}, "Put Wall 489", middlePrice - 50, 0.937, 0.325, 0.314}};
}

void showMarkedStrike(Scene& scene) {
    scene.left = 0;
    scene.marked = middlePrice / ratio + 1;
}

void showLevels(Scene& scene) {
    scene.lines = {{middlePrice + 40, firstTime, {}, "R1", false}, {middlePrice - 40, firstTime, {}, "S1", false}};
}

void showSessionLines(Scene& scene) {
    scene.lines = {{middlePrice + 50, firstTime, {}, "Prev High", true},
                   {middlePrice - 40, firstTime, {}, "Open", false}};
}

void showPosition(Scene& scene) { scene.account.position = PositionLine{2, middlePrice + 10}; }

void showOrders(Scene& scene) {
    scene.account.orders = {{Uuid{{1}}, middlePrice - 45, true, 1, "LMT"},
                            {Uuid{{2}}, middlePrice + 45, false, 1, "LMT"}};
}

void showLegs(Scene& scene) {
    scene.account.legs = {{Uuid{{1}}, "SL", middlePrice - 45}, {Uuid{{1}}, "TP", middlePrice + 45}};
}

void showOrderTags(Scene& scene) {
    showOrders(scene);
    scene.left = viewWidth - MarkSamples::width;
}

void showIndices(Scene& scene) { scene.showOscillator(0); }

void showOptionsFlow(Scene& scene) { scene.showOscillator(3); }

void showAxis(Scene& scene) { scene.left = viewWidth - MarkSamples::width; }

void showWatermark(Scene& scene) {
    scene.left = (viewWidth - PlotArea::priceAxisWidth) / 2 - MarkSamples::width / 2;
    scene.top = (viewHeight - PlotArea::timeAxisHeight) / 2 - MarkSamples::height / 2;
}

struct Entry {
    ChartMark mark;
    void (*show)(Scene& scene);
};

constexpr std::array entries{
    Entry{
        {"bars", "Bars", "How the price went, one bar for each stretch of the timeframe, in the colours of the theme."},
        showBars},
    Entry{{"forming", "Forming bar, last price", "The bar that trades still change, and a line at the last price."},
          showForming},
    Entry{
        {"axis", "Last price", "In its box on the axis, rising or falling; the time to the bar's close stands below."},
        showAxis},
    Entry{{"second", "Paired instrument", "Its bars, brought to this chart's scale. The tag tells its own price."},
          showSecond},
    Entry{{"vwap", "VWAP", "The session's average price, by volume."}, showVwap},
    Entry{{"vwapNY", "VWAP NY", "The same since New York's open."}, showVwapNY},
    Entry{{"averages", "Moving averages", "Two exponential ones, in the colours of the settings."}, showAverages},
    Entry{{"hfLine", "HF line", "The net flow, drawn from the session's open: blue in, red out."}, showFlowLine},
    Entry{{"vix", "VIX", "The volatility index, with its value."}, showVix},
    Entry{{"past", "Dimmed tag", "In the history: the line goes on out of view. The tag tells its last value in view."},
          showPast},
    Entry{{"gexBubbles", "GEX dominance", "Bubbles at the strikes with the most gamma of a minute; bigger is more."},
          showBubbles},
    Entry{{"hfTriangles", "HF dominance", "Triangles at the strikes with the most flow of a minute; up for calls."},
          showTriangles},
    Entry{{"hfWave", "HF waveform", "The flow over all strikes, calls and puts."}, showFlowWave},
    Entry{{"oiWave", "OI waveform", "The open interest over all strikes, calls and puts."}, showInterestWave},
    Entry{{"gexBars", "GEX bars", "Net gamma of each strike at its price; green is positive, red negative."},
          showGammaBars},
    Entry{
        {"strikeNames", "KGS, Gamma Flip", "The strike with the most net gamma, and the one where gamma changes sign."},
        showStrikeNames},
    Entry{{"secBars", "Bars of the second source", "The same of the index, with the source ETF + Index."},
          showSecondBars},
    Entry{{"dexBars", "DEX bars", "Net delta of each strike, from the left."}, showDeltaBars},
    Entry{{"walls", "Walls", "The strikes with the most gamma of calls and of puts, from the session's start."},
          showWalls},
    Entry{{"markedStrike", "Marked strike", "The strike of the bar that was pressed in the 3D view."},
          showMarkedStrike},
    Entry{{"levels", "Support and resistance", "R1, S1 and so on. Lines of one price share a label."}, showLevels},
    Entry{{"sessionLines", "Session lines", "The session's open, and high, low and close of the one before."},
          showSessionLines},
    Entry{{"position", "Position", "What the paper account holds, at its average price."}, showPosition},
    Entry{{"orders", "Working orders", "Drag one to change its price; the cross cancels it."}, showOrders},
    Entry{{"orderTags", "Price of an order", "In its tag on the axis: green buys and targets, red sells and stops."},
          showOrderTags},
    Entry{{"legs", "Planned stop and target", "What an order will get when it fills. They can be dragged as well."},
          showLegs},
    Entry{{"oscIndices", "Oscillator", "The instrument, ES and the VIX on one scale, minute by minute."}, showIndices},
    Entry{{"oscFlow", "Oscillator's options", "Calls, puts and the net of both on the same scale."}, showOptionsFlow},
    Entry{{"watermark", "Symbol and timeframe", "Faintly, under everything."}, showWatermark},
};

constexpr auto marks = [] {
    std::array<ChartMark, entries.size()> out{};
    std::ranges::transform(entries, out.begin(), &Entry::mark);
    return out;
}();

/// Shows lines, and does nothing.
class SampleAccount final : public ChartTrading {
 public:
    TradingLines shown;

    void lines(const std::string&, TradingLines& out) const override { out = shown; }
    double unrealized(const std::string&) const override { return 0; }
    std::size_t workingCount(const std::string&) const override { return shown.orders.size(); }
    std::optional<double> last(const std::string&) const override { return middlePrice; }
    std::int64_t ticketQty() const override { return 1; }
    double roundTick(const std::string&, double price) const override { return price; }
    void place(const std::string&, std::string_view, std::string_view, double) override {}
    void cancel(const Uuid&) override {}
    void cancelAll(const std::string&) override {}
    void modify(const Uuid&, double) override {}
    void modifyProjectedLeg(const Uuid&, std::string_view, double) override {}
    void putBack(const Uuid&, std::string_view, double) override {}
    void setProtective(const std::string&, std::string_view, double) override {}
    void flatten(const std::string&) override {}
};

}  // namespace

std::span<const ChartMark> chartMarks() { return marks; }

struct MarkSamples::Sample {
    GpuPart gpu;
    SampleAccount account;
    ChartView view;
    std::optional<OscillatorPane> oscillator;
    OscLines oscLines;
    std::vector<Candle> oscCandles;
    OscInput oscInput;
    double left = 0, top = 0, width = 0;

    explicit Sample(const Surroundings& at)
        : gpu(at.gpu), view({gpu, at.glyphs, at.session, at.clock, at.main, nullptr, &account}) {}

    void show(const Scene& scene) {
        account.shown = scene.account;
        left = scene.left;
        top = scene.top;
        width = scene.width;
        if (scene.oscillator) {
            oscLines = scene.oscLines;
            oscCandles = scene.candles;
            const auto last = static_cast<double>(barCount - 1);
            oscInput = {*scene.oscillator, oscCandles, 1, {last + 8 - barsAcross, barsAcross, 0, 1}};
            oscInput.content.lines = &oscLines;
            return;
        }
        view.setContent({.timeframe = 1,
                         .simRoot = "NQ",
                         .symbol = "NQ",
                         .look = &scene.look,
                         .candles = scene.candles,
                         .levels = scene.walls,
                         .strikes = scene.strikes,
                         .etfRatio = ratio,
                         .flipStrike = scene.flip,
                         .markedStrike = scene.marked,
                         .secStrikes = scene.secStrikes,
                         .secRatio = ratio,
                         .bubbles = scene.bubbles,
                         .triangles = scene.triangles,
                         .secondSymbol = "ES",
                         .overlays = &scene.series,
                         .overlayStyle = scene.style,
                         .srLines = scene.lines,
                         .revisions = {1, 1, 1, 1, 1, 1, 1, 1}});
        view.setSize(width, viewHeight);
        view.mirrorView(scene.first, barsAcross);
        // the price range for which the middle price lies in the sample's middle
        const auto share = [](double y) { return (1.9 - 2 * y / viewHeight) / 1.8; };
        constexpr double margin = 8;
        const double range = 2 * reach / (share(margin) - share(MarkSamples::height - margin));
        const double lowest = middlePrice - reach - share(MarkSamples::height - margin) * range;
        view.mirrorPrice(lowest, lowest + range);
    }
};

MarkSamples::MarkSamples(const Surroundings& surroundings) : at_(surroundings), samples_(entries.size()) {}
MarkSamples::~MarkSamples() = default;

bool MarkSamples::setLook(const RenderConfig& look, const OverlayStyle& style) {
    if (look_ == look && style_ == style) return false;
    look_ = look;
    style_ = style;
    samples_ = std::vector<std::unique_ptr<Sample>>(entries.size());
    return true;
}

MarkSamples::Sample& MarkSamples::sampleOf(std::size_t mark) {
    auto& sample = samples_[mark];
    if (sample) return *sample;
    sample = std::make_unique<Sample>(at_);
    Scene scene(look_, style_);
    entries[mark].show(scene);
    if (scene.oscillator) sample->oscillator.emplace(sample->gpu, at_.glyphs);
    sample->show(scene);
    return *sample;
}

void MarkSamples::draw(std::size_t mark, double x, double y, double frameWidth, double frameHeight, double pixelRatio) {
    Sample& sample = sampleOf(mark);
    sample.gpu.place({x, y, width, height}, frameWidth, frameHeight, sample.left, sample.top);
    if (sample.oscillator)
        sample.oscillator->record(sample.oscInput, sample.width, height, pixelRatio);
    else
        sample.view.record(sample.width, viewHeight, pixelRatio, 0, true);
}

}  // namespace vmr
