// The scales of HF flow that a server's catalog has named.
#pragma once

#include <map>
#include <optional>
#include <string>

namespace vmr {

/// By future or stock symbol; one for all panes of the process. Main thread.
class HfScales {
 public:
    void set(const std::string& symbol, double scale) { bySymbol_[symbol] = scale; }
    std::optional<double> find(const std::string& symbol) const {
        const auto found = bySymbol_.find(symbol);
        return found == bySymbol_.end() ? std::nullopt : std::optional(found->second);
    }

 private:
    std::map<std::string, double> bySymbol_;
};

}  // namespace vmr
