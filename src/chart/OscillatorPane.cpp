#include "chart/OscillatorPane.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "chart/ChartRenderer.h"
#include "chart/OscColumns.h"
#include "chart/PipelineState.h"
#include "perf/Perf.h"

namespace vmr {

namespace {

using namespace OscGeometry;

constexpr TextStyle scaleStyle{FontFace::regular, 13}, valueStyle{FontFace::semibold, 13},
    legendStyle{FontFace::regular, 11};
constexpr Rgba scaleColor{1, 1, 1, 0.53F}, noticeColor{0.42F, 0.443F, 0.47F, 1};
constexpr Rgba legendGround{0.04F, 0.04F, 0.04F, 0.72F};
constexpr double legendTop = 6, legendLeft = 10, legendGap = 12, legendLine = 17;  // points

}  // namespace

bool OscillatorPane::record(const std::optional<OscInput>& input, double width, double height, double pixelRatio) {
    if (perf) perf->bump("Osc.canvas");
    arena_.beginFrame();
    gpu_.beginFrame(width, height, pixelRatio);
    gpu_.clear(ChartRenderer::clearColor);
    bool stale = false;
    const auto range = input && width > 0 && height > 0 ? visibleRange(*input) : std::nullopt;
    if (range) {
        drawGrid(width, height, pixelRatio);
        drawSeries(*input, *range, width, height);
        PaintSurface surface{gpu_, arena_, width, height, pixelRatio};
        stale = painter_.paint(surface, [&] { paintTexts(input->content, width, height); });
    }
    gpu_.endFrame();
    return stale;
}

void OscillatorPane::draw(Pipeline pipeline, const LineUniforms& uniforms, const std::optional<DynUpload>& upload) {
    if (!upload) return;
    setWithView(gpu_, pipeline, uniforms);
    gpu_.draw(Primitive::quads, upload->buffer, upload->offset, upload->count);
}

// A line lies on whole device pixels, so that it is as crisp as the chart's.
void OscillatorPane::drawGrid(double width, double height, double pixelRatio) {
    const auto line = [&](LineVertex* out, double value, float opacity) {
        const double top = std::round((yFor(value, height) - 0.5) * pixelRatio) / pixelRatio;
        const auto y = static_cast<float>(top + 0.5);
        return writeSegment(out, 0, y, static_cast<float>(width), y, 0.5F, Rgba{1, 1, 1, opacity});
    };
    const auto dashes = [&](float on, float off) {
        LineUniforms uniforms = pointUniforms(width, height);
        uniforms.pad0 = on + off;
        uniforms.pad1 = on / (on + off);
        return uniforms;
    };
    std::array<LineVertex, 2 * segmentVertices> outer;
    line(line(outer.data(), 80, 0.227F), -80, 0.227F);
    draw(Pipeline::dashed, dashes(1.5F, 3), arena_.uploadDyn(outer));
    std::array<LineVertex, segmentVertices> middle;
    line(middle.data(), 0, 0.267F);
    draw(Pipeline::dashed, dashes(5, 4), arena_.uploadDyn(middle));
}

void OscillatorPane::drawSeries(const OscInput& input, const Range& range, double width, double height) {
    constexpr double farOff = 1e5;  // beyond which a line's slope can no longer be seen
    const double barWidth = width / input.viewport.count;
    const bool dense = barWidth < 1;
    const auto add = [&](double bar, double value, bool begins) {
        stroke_.add((bar - input.viewport.first) * barWidth, yFor(std::clamp(value, -farOff, farOff), height), begins);
    };
    OscColumns columns(input.viewport.first, OscStroke::width / barWidth, add);
    stroke_.clear();
    for (std::size_t i = 0; i < oscSeries.size(); ++i) {
        const auto points = pointsOf(input.content, i);
        const bool breaks = oscSeries[i].breaks;
        stroke_.setColor(oscSeries[i].color, dense);
        if (dense) {
            eachRun(points, input, range, breaks,
                    [&](std::size_t bar, std::span<const OscPt> run, bool begins) { columns.add(bar, run, begins); });
            columns.flush();
        } else {
            eachPoint(points, input, range, breaks, [&](std::size_t bar, double value, bool begins) {
                add(static_cast<double>(bar), value, begins);
            });
        }
        stroke_.end();
    }
    const LineUniforms view = pointUniforms(width, height);
    const std::size_t vertices = stroke_.segmentCount() * segmentVertices;
    stroke_.write(arena_.reserve<LineVertex>(vertices).data());
    draw(Pipeline::ribbon, view, arena_.commit<LineVertex>(vertices));
    draw(Pipeline::disc, view, arena_.uploadDyn(stroke_.caps()));
}

void OscillatorPane::paintTexts(const OscContent& content, double width, double height) {
    const Labels shown = labels(content, height);
    paintScale(shown, width, height);
    for (const Label& label : shown.span()) {
        const AxisScale::Label text = valueText(label.value);
        const OscSeries& series = oscSeries[label.series];
        const double wide = painter_.textWidth(text.text(), valueStyle) + 10, x = width - wide - 1;
        painter_.roundedBox(x, label.y - halfLabel, x + wide, label.y + halfLabel, 3, series.color);
        const Rgba ink = series.darkText ? Rgba{0, 0, 0, 1} : Rgba{1, 1, 1, 1};
        painter_.text(text.text(), valueStyle, x + wide / 2, label.y, TextAlign::center, ink);
    }
    paintLegend(content, width);
    const std::string_view said = notice(content);
    const double middle = PlotArea{width, height}.right() / 2;
    if (!said.empty()) painter_.text(said, scaleStyle, middle, height / 2, TextAlign::center, noticeColor);
}

// A number that a label would cut is left out. None has the grid go through it.
void OscillatorPane::paintScale(const Labels& labels, double width, double height) {
    for (double value = -limit; value <= limit; value += scaleStep) {
        const double y = yFor(value, height);
        const bool meets = std::ranges::any_of(
            labels.span(), [&](const Label& label) { return std::abs(label.y - y) < halfLabel + halfScaleText; });
        if (y < 8 || y > height - 4 || meets) continue;
        const AxisScale::Label text = valueText(value);
        const double left = width - 6 - painter_.textWidth(text.text(), scaleStyle);
        painter_.rect(left - 4, y - 2, width, y + 2, ChartRenderer::clearColor);
        painter_.text(text.text(), scaleStyle, width - 6, y, TextAlign::right, scaleColor);
    }
}

// On more lines where one would reach the labels.
void OscillatorPane::paintLegend(const OscContent& content, double width) {
    const double right = std::max(PlotArea{width, 0}.right(), legendLeft);
    double x = legendLeft, y = legendTop;
    for (std::size_t i = 0; i < oscSeries.size(); ++i) {
        if (!isShown(content, i)) continue;
        const AxisScale::Label text = legendText(content, i);
        const double wide = painter_.textWidth(text.text(), legendStyle);
        if (x > legendLeft && x + wide > right) {
            x = legendLeft;
            y += legendLine;
        }
        painter_.rect(x - legendGap / 2, y, x + wide + legendGap / 2, y + legendLine, legendGround);
        const double middle = y + painter_.lineHeight(legendStyle) / 2;
        painter_.text(text.text(), legendStyle, x, middle, TextAlign::left, oscSeries[i].color);
        x += wide + legendGap;
    }
}

OscFacts OscillatorPane::facts(const OscInput& input, double height) {
    OscFacts out;
    out.height = height;
    out.notice = notice(input.content);
    const auto range = visibleRange(input);
    for (std::size_t i = 0; i < oscSeries.size(); ++i) {
        if (!isShown(input.content, i)) continue;
        out.legend.emplace_back(legendText(input.content, i).text());
        auto& lines = out.lines.emplace_back(oscSeries[i].name, std::vector<OscFacts::Line>()).second;
        const auto add = [&](std::size_t bar, double value, bool begins) {
            if (begins) lines.emplace_back();
            lines.back().emplace_back(static_cast<double>(bar), value);
        };
        if (range) eachPoint(pointsOf(input.content, i), input, *range, oscSeries[i].breaks, add);
    }
    const Labels shown = labels(input.content, height);
    for (const Label& label : shown.span())
        out.labels.push_back({std::string(valueText(label.value).text()), label.wanted, label.y});
    return out;
}

}  // namespace vmr
