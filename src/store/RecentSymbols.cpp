#include "store/RecentSymbols.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace vmr {

std::vector<std::string> recentSymbols(const Preferences& preferences) {
    const auto stored = preferences.get(recentSymbolsKey);
    const auto list = nlohmann::json::parse(stored.value_or(""), nullptr, false);
    std::vector<std::string> out;
    if (!list.is_array()) return out;
    for (const auto& one : list)
        if (one.is_string() && out.size() < mostRecentSymbols) out.push_back(one.get<std::string>());
    return out;
}

void noteRecentSymbol(Preferences& preferences, const std::string& sym) {
    std::vector<std::string> list = recentSymbols(preferences);
    if (!list.empty() && list.front() == sym) return;
    std::erase(list, sym);
    list.insert(list.begin(), sym);
    if (list.size() > mostRecentSymbols) list.resize(mostRecentSymbols);
    preferences.set(recentSymbolsKey, nlohmann::json(list).dump());
}

}  // namespace vmr
