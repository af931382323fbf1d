// Every mark of a chart by name, with a sample of each that the chart's own layers draw: the key to the chart.
#pragma once

#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "base/Clock.h"
#include "base/SerialQueue.h"
#include "chart/OverlayStyle.h"
#include "chart/RenderConfig.h"
#include "gpu/GlyphSource.h"
#include "gpu/Gpu.h"
#include "market/SessionTime.h"

namespace vmr {

struct ChartMark {
    std::string_view id, name, meaning;
};
/// In the order of the key.
std::span<const ChartMark> chartMarks();

/// Charts of made-up bars, one for each mark, with all else switched off. They are made when they are first drawn.
/// Main thread.
class MarkSamples {
 public:
    static constexpr double width = 176, height = 64;  ///< points

    /// All outlive it.
    struct Surroundings {
        Gpu& gpu;
        GlyphSource& glyphs;
        SessionTime& session;
        const Clock& clock;
        MainLoop& main;
    };
    explicit MarkSamples(const Surroundings& surroundings);
    ~MarkSamples();
    MarkSamples(const MarkSamples&) = delete;
    MarkSamples& operator=(const MarkSamples&) = delete;

    /// The colours and opacities that the user chose; what is switched off or too faint to be seen is shown all the
    /// same. True where they are others.
    bool setLook(const RenderConfig& look, const OverlayStyle& style);

    /// Draws the sample of `chartMarks()[mark]` with its top left at this point of the frame that is being recorded.
    void draw(std::size_t mark, double x, double y, double frameWidth, double frameHeight, double pixelRatio);

 private:
    struct Sample;
    Sample& sampleOf(std::size_t mark);

    Surroundings at_;
    RenderConfig look_;
    OverlayStyle style_;
    std::vector<std::unique_ptr<Sample>> samples_;
};

}  // namespace vmr
