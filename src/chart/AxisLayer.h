// The chart's axes: prices at the right, times at the bottom, a faint grid, and the last price in its box.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "chart/AxisScale.h"
#include "chart/ScreenLayer.h"
#include "gpu/Painter.h"
#include "gpu/PointRect.h"
#include "market/SessionTime.h"

namespace vmr {

class MarkedStrikeLayer;
class TradingLinesLayer;

/// Labels never touch each other, the view's edges or the last-price box; one that would fades out or is left away.
/// Where the half hours of `AxisScale` give fewer than two whole time labels, or more than one in 64 points, the time
/// axis names finer or coarser steps, and where bars lie on none of the steps (a stock seen from afar) it names days.
/// Main thread.
class AxisLayer final : public ScreenLayer {
 public:
    /// Both must outlive the layer. `session` is used on the main thread.
    AxisLayer(GlyphSource& glyphs, SessionTime& session);

    /// Minutes of a bar; 1 at the start. Shows in the next frame. True when it was another.
    bool setTimeframe(double minutes) { return std::exchange(timeframe_, minutes) != minutes; }

    /// Whether the prices leave room for the countdown, below the last price's box and the tags of lines there or,
    /// where the axis ends, above them; at the end of the axis while the last price is out of view. Shows in the next
    /// frame. True when it was otherwise.
    bool setCountdown(bool shown) { return std::exchange(keepsCountdown_, shown) != shown; }

    /// What a label takes of its axis, in points.
    struct Extent {
        double from = 0, to = 0;
    };
    /// A label and where its middle lies along the axis, points.
    struct Named {
        AxisScale::Label text;
        double at = 0;
    };
    /// Of the labels in the last frame.
    struct Labels {
        std::vector<Extent> prices, times;
        std::vector<Named> priceTexts, timeTexts;
        Extent lastPrice;          ///< its box, in whole pixels; empty where it is not shown
        Extent countdown;          ///< room for it, likewise
        std::vector<Extent> tags;  ///< of the account's lines and the marked strike, likewise; each may meet others
        void clear() {
            prices.clear();
            times.clear();
            priceTexts.clear();
            timeTexts.clear();
            tags.clear();
            lastPrice = countdown = {};
        }
    };
    const Labels& labels() const { return labels_; }

    /// Where the last price's box stands in this frame; empty where it is not shown.
    PointRect lastPriceBox(const ScreenFrame& frame) const;
    /// The account's lines, to whose tags the axis' prices and the countdown give way; null for none.
    const TradingLinesLayer* account = nullptr;
    /// The marked strike, to whose tag they give way likewise; null for none.
    const MarkedStrikeLayer* marked = nullptr;

    void drawBelow(ScreenFrame& frame) override;
    bool drawAbove(ScreenFrame& frame) override;

 private:
    struct TimeLabel {
        AxisScale::Label label;
        double x = 0;      ///< centre, points
        double width = 0;  ///< points
        bool date = false;
    };
    struct Box {
        double top = 0, bottom = 0;
        bool shown = false;
    };
    void findPriceTicks(const ScreenFrame& frame);
    void findTimeTicks(const ScreenFrame& frame);
    void nameTicks(const ScreenFrame& frame, std::int64_t step);
    std::size_t wholeTimeLabels(const ScreenFrame& frame) const;
    void findDays(const ScreenFrame& frame);
    void nameTimeTicks(const ScreenFrame& frame, std::int64_t step);
    void keepApart();
    void gatherTags();
    Box tagBox(const ScreenFrame& frame) const;
    Box countdownBox(const ScreenFrame& frame, const Box& tag) const;
    std::optional<double> freeTop(double top, double height, bool upwards) const;
    void addPriceLabels(const ScreenFrame& frame, const Box& box, const Box& countdown);
    void addTimeLabels(const ScreenFrame& frame);
    bool addPrice(const ScreenFrame& frame, double price, FontFace face, double y, const Rgba& color);
    void addGrid(const ScreenFrame& frame);
    void addGround(const ScreenFrame& frame, const Box& box);

    SessionTime& session_;
    Painter painter_;
    double timeframe_ = 1;
    bool keepsCountdown_ = false;
    AxisScale::PriceTicks priceTicks_;
    std::vector<std::size_t> timeTicks_;
    std::vector<TimeLabel> timeLabels_;
    std::vector<PointRect> tags_;  // of lines, on the price axis
    Labels labels_;
};

}  // namespace vmr
