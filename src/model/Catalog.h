// The instruments that a pane can show: the built-in ones until the server's catalog and contract map have come.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/Json.h"
#include "base/Signal.h"

namespace vmr {

class HfScales;

/// One future of the server's catalog.
struct CatalogFut {
    std::string sym;
    std::vector<std::string> sources;
    std::string defaultSource;
    std::optional<std::string> pair;
    double tick = 0.25;
    double tickValue = 5.0;
    double hfScale = 1.0;
    bool operator==(const CatalogFut&) const = default;
};

/// Survives a change of chart. Main thread.
class Catalog {
 public:
    explicit Catalog(NoticeGate* gate = nullptr) : catFutures(gate), catStocks(gate), contractOverrides(gate) {}

    Observable<std::vector<CatalogFut>> catFutures;
    Observable<std::vector<std::string>> catStocks;
    Observable<std::map<std::string, std::string>> contractOverrides;  ///< root to front contract, as the server says

    /// Symbols and their default options source, for the symbol menu.
    std::vector<std::pair<std::string, std::string>> futuresList() const;
    std::vector<std::string> stockList() const;
    bool isStock(const std::string& sym) const;  ///< one of `stockList`
    std::optional<std::string> pairFor(const std::string& root) const;
    std::optional<std::string> effectiveContract(const std::string& sym) const;
    std::optional<std::string> indexSourceFor(const std::string& sym) const;
    std::optional<std::string> defaultSourceFor(const std::string& sym) const;

    /// The server's catalog; its scales go to `scales`. A list that is empty or cannot be read changes nothing. Tells
    /// whether the futures are new.
    bool applyCatalog(JsonView catalog, HfScales& scales);
    /// The server's map from roots to contracts. Gives the new contract of `shown`, the symbol of the chart, if it has
    /// another one than before.
    std::optional<std::string> applyContracts(JsonView map, const std::string& shown);
};

}  // namespace vmr
