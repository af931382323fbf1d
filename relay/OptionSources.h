// The option sources of the practice market: whose options stand behind which future or stock.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "relay/Instruments.h"

namespace vmr::relay {

/// One underlying with listed options.
struct OptionSource {
    std::string_view name;    ///< "QQQ"
    std::string_view symbol;  ///< futures root or stock that its price follows
    double ratio;             ///< chart price over its own price, about
    bool dailies;             ///< expires on every trading day, else on the week's last
    double reach;             ///< the strikes listed go this share of the price up and down

    const Instrument& instrument() const { return *findTradable(symbol); }
};

std::span<const OptionSource> optionSources();

/// Nothing for an unknown name.
const OptionSource* findOptionSource(std::string_view name);

/// The ratio of one trading day: it drifts by a few hundredths of a percent from day to day.
double dayRatio(const OptionSource& source, std::uint64_t seed, std::int64_t sessionStart);

/// The volatility of the instrument per day, as a share of the price.
double dailyVolatility(const Instrument& instrument);

}  // namespace vmr::relay
