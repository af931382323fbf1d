// The plain records that cross folder borders. Values, copied freely, compared field by field.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/Uuid.h"

namespace vmr {

/// One OHLCV bar. Prices in the instrument's points.
struct Candle {
    std::int64_t time = 0;  ///< seconds since 1970 of the bar's start; raw bars lie on whole minutes
    double open = 0;
    double high = 0;
    double low = 0;
    double close = 0;
    double volume = 0;  ///< contracts or shares; 0 for bars that only live trades built
    bool operator==(const Candle&) const = default;
};

/// A labelled horizontal level, such as a wall.
struct PriceLevel {
    Uuid id;  ///< fresh at every parse; not compared
    std::string label;
    double price = 0;            ///< chart price
    double r = 0, g = 0, b = 0;  ///< colour, each 0 to 1
    bool operator==(const PriceLevel& o) const {
        return label == o.label && price == o.price && r == o.r && g == o.g && b == o.b;
    }
};

/// One strike of one expiration or of the aggregate, in the option source's strike units. Missing inputs are 0.
struct StrikeRow {
    double strike = 0;
    double callGex = 0, putGex = 0;
    double callDex = 0, putDex = 0;
    double callHf = 0, putHf = 0;
    double callOI = 0, putOI = 0;
    bool operator==(const StrikeRow&) const = default;
};

/// One bubble marker: a strike that dominated gamma in a minute.
struct BubblePt {
    std::int64_t minuteTs = 0;  ///< seconds since 1970
    double strike = 0;
    double dom = 0;    ///< dominance weight, 0 when absent
    bool pos = false;  ///< positive gamma
    int rank = 0;      ///< 0, 1 or 2: first, second or third strike of the minute
    bool operator==(const BubblePt&) const = default;
};

/// One flow marker.
struct TrianglePt {
    std::int64_t minuteTs = 0;  ///< seconds since 1970
    double strike = 0;
    double net = 0;        ///< signed net flow at the strike in the minute
    double minuteMax = 0;  ///< largest absolute `net` of the minute, above 0
    bool operator==(const TrianglePt&) const = default;
};

/// One point of an oscillator line; `t` in seconds since 1970.
struct OscPt {
    std::int64_t t = 0;
    double v = 0;
    bool operator==(const OscPt&) const = default;
};

/// The six lines of the oscillator.
struct OscLines {
    std::vector<OscPt> nq, es, vix, call, put, net;
    bool operator==(const OscLines&) const = default;
};

/// One support/resistance level of a session.
struct SRLevel {
    std::int64_t i = 0;
    std::string label;
    double price = 0;
    std::int64_t triggerTime = 0;  ///< seconds since 1970
    bool operator==(const SRLevel&) const = default;
};

/// One session's open and its levels above and below.
struct SRSession {
    std::int64_t sessionOpenTs = 0;  ///< seconds since 1970
    double openPrice = 0;
    std::vector<SRLevel> up, dn;
    bool operator==(const SRSession&) const = default;
};

/// A horizontal line over a stretch of time; without `endTime` it runs on.
struct OverlayLine {
    double price = 0;
    std::int64_t startTime = 0;
    std::optional<std::int64_t> endTime;
    std::string label;
    bool dashed = false;
    bool operator==(const OverlayLine&) const = default;
};

/// A point of an overlay series; `idx` counts display bars and may fall between two.
struct OvPoint {
    double idx = 0;
    double v = 0;
    double real = 0;  ///< the VIX's close, of which `v` is where it is laid; 0 for other series
    bool operator==(const OvPoint&) const = default;
};

/// A point of a series that changes colour with its sign.
struct OvColorPoint {
    double idx = 0;
    double v = 0;
    bool positive = false;
    double base = 0;
    double hf = 0;
    bool operator==(const OvColorPoint&) const = default;
};

/// A candle of the paired instrument, scaled onto the primary's prices.
struct OvCandle {
    double idx = 0;
    double o = 0, h = 0, l = 0, c = 0;
    double realC = 0;  ///< the close before scaling
    bool operator==(const OvCandle&) const = default;
};

/// One text beside a strike bar; places in points from the top left.
struct BarLabel {
    double anchorX = 0;
    double y = 0;
    std::string text;
    double fontSize = 0;
    bool alignRight = false;
    double r = 0, g = 0, b = 0;
    std::optional<double> value;
    bool operator==(const BarLabel&) const = default;
};

/// Totals over all strikes; 0 when the payload lacks one.
struct HudMetrics {
    double callOI = 0, putOI = 0, callGex = 0, putGex = 0, hf = 0;
    bool operator==(const HudMetrics&) const = default;
};

/// What the camera shows: the first visible display bar and how many (fractional), and the price range.
struct Viewport {
    double first = 0;
    double count = 0;
    double minP = 0;
    double maxP = 0;
    bool operator==(const Viewport&) const = default;
};

}  // namespace vmr
