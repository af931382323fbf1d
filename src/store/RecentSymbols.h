// The symbols that were shown last.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "base/Preferences.h"

namespace vmr {

constexpr const char* recentSymbolsKey = "vmr.symbols.recent";
constexpr std::size_t mostRecentSymbols = 5;

/// The latest first; none where nothing that can be read is kept.
std::vector<std::string> recentSymbols(const Preferences& preferences);
/// Puts it first.
void noteRecentSymbol(Preferences& preferences, const std::string& sym);

}  // namespace vmr
