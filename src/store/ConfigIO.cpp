#include "store/ConfigIO.h"

namespace vmr::ConfigIO {

GexConfig load(const Preferences& preferences) {
    const auto stored = preferences.get(configKey);
    if (!stored) return {};
    return GexConfig::fromJson(*stored).value_or(GexConfig());
}

void save(Preferences& preferences, const GexConfig& config) {
    preferences.setLater(configKey, [config] { return config.toJson(); });
}

void reset(Preferences& preferences) {
    preferences.remove(configKey);
    preferences.remove(lastSymbolKey);
    preferences.remove(timeframeKey);
}

}  // namespace vmr::ConfigIO
