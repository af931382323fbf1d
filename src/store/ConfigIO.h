// Loading and storing the settings.
#pragma once

#include "base/Preferences.h"
#include "store/GexConfig.h"

namespace vmr::ConfigIO {

inline constexpr const char* configKey = "gex-config";
inline constexpr const char* lastSymbolKey = "gex-last-symbol";
inline constexpr const char* timeframeKey = "gex-timeframe";

/// The stored settings, or the defaults when there are none or they do not decode. Writes nothing.
GexConfig load(const Preferences& preferences);

/// Stores the whole record; its text is made when it is written.
void save(Preferences& preferences, const GexConfig& config);

/// Forgets the settings, the last symbol and the timeframe.
void reset(Preferences& preferences);

}  // namespace vmr::ConfigIO
