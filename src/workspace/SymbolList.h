// What a symbol menu offers.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "workspace/ActionTable.h"

namespace vmr {

enum class SymbolGroup { recent, futures, stocks };

struct SymbolRow {
    SymbolGroup group = SymbolGroup::futures;
    std::string symbol;
    std::string contract;        ///< the listed one of a future; empty for a stock
    std::optional<double> last;  ///< price, where some pane watches it
};

/// The last used first, then all futures and all stocks; `recent` are symbols, the latest first. Empty without a pane.
std::vector<SymbolRow> symbolRows(const ActionContext& at, const std::vector<std::string>& recent);

}  // namespace vmr
