// The user's settings: one flat record, read leniently and stored whole.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace vmr {

/// 60 settings. The field names are the keys of the stored JSON; the values here are the defaults. Opacities are in
/// percent. SettingTable.h tells the rest about each field, such as the limits of the four that have some: a new
/// setting is a field here and a row there.
struct GexConfig {
    std::string candleTheme = "mono";   ///< or "classic"
    std::int64_t initialCandles = 200;  ///< bars left of the margin on open
    bool lineRates = true;              ///< VWAP tags also show their value
    double lineOpacity = 100.0;
    bool gexEnabled = true;
    bool gexLabels = true;
    double gexOpacity = 62.0;       ///< GEX and DEX bars
    std::string gexSource = "ETF";  ///< "ETF", "INDEX" or "BOTH"
    bool gexBubbles = true;
    double gexBubbleOpacity = 100.0;
    std::string gexPosColor = "#26a69a";
    std::string gexNegColor = "#ef5350";
    bool dexEnabled = false;
    bool dexLabels = false;
    bool wallsEnabled = true;
    bool levelsEnabled = true;
    bool sessionEnabled = true;
    std::int64_t sessionStart = 1800;  ///< hhmm, New York
    bool showOpen = true;
    bool showPrev = true;
    bool vwapEnabled = true;
    bool vwapNyEnabled = false;
    bool showSecondary = true;
    bool hfEnabled = true;
    double hfScale = 5.0;
    double hfLineOpacity = 100.0;
    bool hfLateralEnabled = true;
    std::string hfLateralMode = "separated";  ///< or "net"
    double hfLateralOpacity = 52.0;
    bool hfBubbles = true;
    std::string hfCallColor = "#00bcd4";
    std::string hfPutColor = "#ff7a00";
    double hfTriangleOpacity = 100.0;
    bool hfPressure = false;
    std::map<std::string, double> hfScaleBySymbol;  ///< the user's HF scale by symbol
    bool vixEnabled = true;
    std::string vixMode = "30d";  ///< or "1d"
    double vixScale = 0.08;
    std::int64_t vixSmooth = 5;
    bool ema1Enabled = false;
    std::int64_t ema1Period = 9;
    std::string ema1Color = "#00E5FF";
    bool ema2Enabled = false;
    std::int64_t ema2Period = 200;
    std::string ema2Color = "#FF7A00";
    bool oiEnabled = false;
    double oiOpacity = 40.0;
    bool showNyClock = true;
    bool showCountdown = true;
    bool simEnabled = false;
    double simBalance = 50000.0;  ///< balance after a reset
    double simCommission = 2.5;   ///< per contract and fill
    bool oscEnabled = true;
    double oscHeight = 200.0;  ///< points
    bool oscNq = true;
    bool oscEs = true;
    bool oscVix = true;
    bool oscCall = true;
    bool oscPut = true;
    bool oscNet = true;

    bool operator==(const GexConfig&) const = default;

    /// The built-in scale of the HF line for a symbol; 1 for an unknown one.
    static double hfScaleDefault(const std::string& symbol);

    /// The scale of the HF line: the user's for the symbol, else the built-in one, else 1.
    double hfScaleFor(const std::string& symbol) const;

    /// The lenient reader: each key on its own, the default for a missing or mistyped one. Nothing when `text` is not
    /// a JSON object.
    static std::optional<GexConfig> fromJson(std::string_view text);

    /// One JSON object with all 60 keys, compact.
    std::string toJson() const;

    /// Sets the field `key` from one JSON value, with the same limits as reading. Returns what is wrong (unknown key,
    /// malformed JSON, wrong type) and then changes nothing.
    std::optional<std::string> set(std::string_view key, std::string_view jsonValue);
};

}  // namespace vmr
