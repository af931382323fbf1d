#include "chart/EdgeLayers.h"

#include <array>
#include <charconv>
#include <cmath>
#include <tuple>
#include <utility>

#include "chart/FlowWaves.h"
#include "chart/StrikeBars.h"
#include "chart/StrikeDisplay.h"

namespace vmr {

namespace {

constexpr Rgba secPositive{0.118F, 0.471F, 1.0F, 1.0F}, secNegative{0.588F, 0.196F, 0.863F, 1.0F};
constexpr Rgba positiveColor{0.149F, 0.651F, 0.604F, 1.0F}, negativeColor{0.937F, 0.325F, 0.314F, 1.0F};

bool positive(double value) { return std::isfinite(value) && value > 0; }

Rgba withAlpha(const Rgba& color, float alpha) { return {color[0], color[1], color[2], alpha}; }

double netGex(const StrikeRow& row) { return row.callGex - row.putGex; }
double netDex(const StrikeRow& row) { return row.callDex + row.putDex; }  // puts are signed in the data
double callHf(const StrikeRow& row) { return row.callHf; }
double putHf(const StrikeRow& row) { return row.putHf; }
double netHf(const StrikeRow& row) { return row.callHf + row.putHf; }
double callOI(const StrikeRow& row) { return row.callOI; }
double putOI(const StrikeRow& row) { return row.putOI; }

WaveLook waveLook(const Rgba& color, float opacity) {
    const Rgba stroke = withAlpha(color, opacity * 0.75F);
    return {withAlpha(color, opacity * 0.3F), {stroke, stroke}, {stroke, stroke}};
}

}  // namespace

struct EdgeLayers::Impl {
    EdgeDisplays shown;
    std::vector<PlacedRow> placed, secPlaced;
    BarLabelList labels;
    std::array<double, 2> size{};  // of the view of the last step

    bool stepBars(const EdgeInput& input, const EdgeStage& stage);
    bool steppedWaves(const EdgeInput& input, const EdgeStage& stage);
    bool stepOI(const EdgeInput& input, const EdgeStage& stage);
    WaveLook netLook(const RenderConfig& config, double maxHf) const;
    std::optional<DynUpload> writeAllBars(const EdgeInput& input, const EdgeStage& stage, FrameArena& arena);
    EdgeFrame::Wave writeOne(StrikeMap<WaveDisp>& wave, const WaveLook& look, const EdgeStage& stage, StrikeMetric net,
                             FrameArena& arena);
    void writeAllWaves(const EdgeInput& input, const EdgeStage& stage, FrameArena& arena, EdgeFrame& frame);
};

bool EdgeLayers::Impl::stepBars(const EdgeInput& input, const EdgeStage& stage) {
    const RenderConfig& config = input.config;
    bool animating = false;
    if (config.gexEnabled && !input.secStrikes.empty() && positive(input.secRatio)) {
        placeRows(input.secStrikes, input.secRatio, input.yScale, input.yOffset, input.viewH, secPlaced);
        animating |= steppedBars(shown.secDisp, input.secStrikes, secPlaced, netGex, stage);
    } else {
        shown.secDisp.clear();
    }
    if (config.gexEnabled) {
        animating |= steppedBars(shown.gexDisp, input.strikes, placed, netGex, stage);
    } else {
        shown.gexDisp.clear();
    }
    if (config.dexEnabled) {
        animating |= steppedBars(shown.dexDisp, input.strikes, placed, netDex, stage);
    } else {
        shown.dexDisp.clear();
    }
    return animating;
}

bool EdgeLayers::Impl::steppedWaves(const EdgeInput& input, const EdgeStage& stage) {
    if (!input.config.waveEnabled) {
        shown.hfCallDisp.clear();
        shown.hfPutDisp.clear();
        return false;
    }
    if (input.config.waveMode == "net") {
        shown.hfPutDisp.clear();
        return steppedNetWave(shown.hfCallDisp, placed, netHf, greatest(input.strikes, netHf), stage);
    }
    const double maxHf = std::max(greatest(input.strikes, callHf), greatest(input.strikes, putHf));
    const bool calls = steppedWave(shown.hfCallDisp, placed, callHf, maxHf, stage);
    const bool puts = steppedWave(shown.hfPutDisp, placed, putHf, maxHf, stage);
    return calls || puts;
}

bool EdgeLayers::Impl::stepOI(const EdgeInput& input, const EdgeStage& stage) {
    if (!input.config.oiEnabled) {
        shown.oiCallDisp.clear();
        shown.oiPutDisp.clear();
        return false;
    }
    const double maxOI = std::max(greatest(input.strikes, callOI), greatest(input.strikes, putOI));
    const bool calls = steppedWave(shown.oiCallDisp, placed, callOI, maxOI, stage);
    const bool puts = steppedWave(shown.oiPutDisp, placed, putOI, maxOI, stage);
    return calls || puts;
}

std::optional<DynUpload> EdgeLayers::Impl::writeAllBars(const EdgeInput& input, const EdgeStage& stage,
                                                        FrameArena& arena) {
    const std::size_t bars = shown.secDisp.size() + shown.gexDisp.size() + shown.dexDisp.size();
    if (bars == 0) return std::nullopt;
    const RenderConfig& config = input.config;
    const float alpha = config.gexOpacity, secAlpha = std::min(alpha * 1.3F, 1.0F);
    const Rgba pos = withAlpha(positiveColor, alpha), neg = withAlpha(negativeColor, alpha);
    const BarLook sec{withAlpha(secPositive, secAlpha), withAlpha(secNegative, secAlpha), true, false, {}, {}};
    const BarLook dex{pos, neg, false, config.dexLabels, {}, {}};
    const BarLook gex{pos,
                      neg,
                      true,
                      config.gexLabels,
                      keyGammaStrike(input.strikes),
                      nearestStrike(input.strikes, input.flipStrike)};

    BoxVertex* const begin = arena.reserve<BoxVertex>(bars * barVertices).data();
    BoxVertex* end = writeBars(shown.secDisp, sec, stage, begin, labels);
    end = writeBars(shown.gexDisp, gex, stage, end, labels);
    end = writeBars(shown.dexDisp, dex, stage, end, labels);
    return arena.commit<BoxVertex>(static_cast<std::size_t>(end - begin));
}

WaveLook EdgeLayers::Impl::netLook(const RenderConfig& config, double maxHf) const {
    double sum = 0;
    for (const PlacedRow& row : placed) {
        if (scales(maxHf) && std::isfinite(netHf(*row.row))) sum += netHf(*row.row);
    }
    const auto both = [&](float alpha) {
        return std::array{withAlpha(config.hfCall, alpha), withAlpha(config.hfPut, alpha)};
    };
    const float opacity = config.waveOpacity;
    return {both(opacity * 0.3F)[sum >= 0 ? 0 : 1], both(opacity * 0.75F), both(opacity * 0.9F)};
}

EdgeFrame::Wave EdgeLayers::Impl::writeOne(StrikeMap<WaveDisp>& wave, const WaveLook& look, const EdgeStage& stage,
                                           StrikeMetric net, FrameArena& arena) {
    EdgeFrame::Wave out;
    if (wave.size() < 2) return out;
    ChartVertex* const fill = arena.reserve<ChartVertex>(fillVertices(wave.size())).data();
    out.fill = arena.commit<ChartVertex>(static_cast<std::size_t>(writeFill(wave, look, stage, fill) - fill));
    LineVertex* const stroke = arena.reserve<LineVertex>(strokeVertices(wave.size())).data();
    out.stroke = arena.commit<LineVertex>(
        static_cast<std::size_t>(writeStroke(wave, look, stage, placed, net, stroke) - stroke));
    MarkerVertex* const dots = arena.reserve<MarkerVertex>(wave.size() * discVertices).data();
    out.dots =
        arena.commit<MarkerVertex>(static_cast<std::size_t>(writeDots(wave, look, stage, placed, net, dots) - dots));
    return out;
}

void EdgeLayers::Impl::writeAllWaves(const EdgeInput& input, const EdgeStage& stage, FrameArena& arena,
                                     EdgeFrame& frame) {
    const RenderConfig& config = input.config;
    const auto write = [&](StrikeMap<WaveDisp>& wave, const WaveLook& look, StrikeMetric net = nullptr) {
        return writeOne(wave, look, stage, net, arena);
    };
    if (config.waveMode == "net") {
        frame.waves[0] = write(shown.hfCallDisp, netLook(config, greatest(input.strikes, netHf)), netHf);
    } else {
        frame.waves[0] = write(shown.hfCallDisp, waveLook(config.hfCall, config.waveOpacity));
        frame.waves[1] = write(shown.hfPutDisp, waveLook(config.hfPut, config.waveOpacity));
    }
    frame.waves[2] = write(shown.oiCallDisp, waveLook(positiveColor, config.oiOpacity));
    frame.waves[3] = write(shown.oiPutDisp, waveLook(negativeColor, config.oiOpacity));
}

EdgeLayers::EdgeLayers() : impl_(std::make_unique<Impl>()) {}
EdgeLayers::~EdgeLayers() = default;

EdgeFrame EdgeLayers::step(const EdgeInput& input, FrameArena& arena) {
    impl_->labels.clear();
    if (!positive(input.viewW) || !positive(input.viewH) || !positive(input.etfRatio)) return {};
    const std::array size{input.viewW, input.viewH};
    const bool resized = std::exchange(impl_->size, size) != size;
    const EdgeStage stage{input.viewW,  input.viewH,  input.snapLerps || resized,
                          input.alphaX, input.alphaY, input.pixelRatio};
    placeRows(input.strikes, input.etfRatio, input.yScale, input.yOffset, input.viewH, impl_->placed);
    EdgeFrame frame;
    frame.animating |= impl_->stepBars(input, stage);
    frame.animating |= impl_->steppedWaves(input, stage);
    frame.animating |= impl_->stepOI(input, stage);
    impl_->writeAllWaves(input, stage, arena, frame);
    frame.bars = impl_->writeAllBars(input, stage, arena);
    return frame;
}

void EdgeLayers::clear() {
    impl_->shown = {};
    impl_->labels.clear();
}

std::span<const BarLabel> EdgeLayers::labels() const { return impl_->labels.span(); }

const EdgeDisplays& EdgeLayers::displays() const { return impl_->shown; }

std::string EdgeLayers::fmtFlow(double v) {
    const double size = std::abs(v);
    const auto [divisor, digits, unit] = size >= 1e9   ? std::tuple{1e9, 1, 'B'}
                                         : size >= 1e6 ? std::tuple{1e6, 1, 'M'}
                                                       : std::tuple{1e3, 0, 'k'};
    char text[352];  // the greatest double in units of 1e9
    char* const end = std::to_chars(text, text + sizeof text - 1, v / divisor, std::chars_format::fixed, digits).ptr;
    *end = unit;
    return {text, end + 1};
}

}  // namespace vmr
