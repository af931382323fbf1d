// Draws the oscillator below a chart.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "chart/OscGeometry.h"
#include "chart/OscStroke.h"
#include "gpu/FrameArena.h"
#include "gpu/Painter.h"

namespace vmr {

class Perf;

/// What the oscillator shows, for the state document.
struct OscFacts {
    using Line = std::vector<std::pair<double, double>>;  ///< bar and value of each point
    struct Label {
        std::string text;
        double wanted = 0, y = 0;  ///< points from the top, before and after the labels were moved apart
    };
    double height = 0;                                             ///< points
    std::vector<std::pair<std::string, std::vector<Line>>> lines;  ///< in view, by the series' names
    std::vector<Label> labels;                                     ///< from top to bottom
    std::vector<std::string> legend;
    std::string notice;
};

/// The same canvas in every frame: grid, series, scale, labels of the newest values, legend. It keeps nothing of what
/// it draws but memory, and allocates nothing once that has grown. Main thread.
class OscillatorPane {
 public:
    /// Both must outlive it.
    OscillatorPane(Gpu& gpu, GlyphSource& glyphs) : gpu_(gpu), arena_(gpu), painter_(glyphs) {}

    Perf* perf = nullptr;  ///< counts the frames; null for nowhere

    /// Records one frame for a view in points; nothing but the ground without an input, bars or area. Tells whether
    /// another one is needed.
    bool record(const std::optional<OscInput>& input, double width, double height, double pixelRatio);

    static OscFacts facts(const OscInput& input, double height);

 private:
    void drawGrid(double width, double height, double pixelRatio);
    void drawSeries(const OscInput& input, const OscGeometry::Range& range, double width, double height);
    void draw(Pipeline pipeline, const LineUniforms& uniforms, const std::optional<DynUpload>& upload);
    void paintTexts(const OscContent& content, double width, double height);
    void paintScale(const OscGeometry::Labels& labels, double width, double height);
    void paintLegend(const OscContent& content, double width);

    Gpu& gpu_;
    FrameArena arena_;
    Painter painter_;
    OscStroke stroke_;
};

}  // namespace vmr
