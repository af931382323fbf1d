#include "market/Roots.h"

#include <algorithm>

namespace vmr {

namespace {
// Cuts a month code and one to four digits off the end, if they stand there.
std::string_view withoutMonth(std::string_view name) {
    constexpr std::string_view monthCodes = "FGHJKMNQUVXZ";
    std::size_t digits = 0;
    while (digits < name.size() && name[name.size() - 1 - digits] >= '0' && name[name.size() - 1 - digits] <= '9')
        ++digits;
    if (digits < 1 || digits > 4 || digits == name.size()) return name;
    const std::size_t code = name.size() - 1 - digits;
    return monthCodes.find(name[code]) == std::string_view::npos ? name : name.substr(0, code);
}
}  // namespace

const BuiltInFuture* builtInFuture(std::string_view sym) {
    const auto found = std::find_if(builtInInstruments.begin(), builtInInstruments.end(),
                                    [sym](const BuiltInFuture& row) { return row.sym == sym; });
    return found == builtInInstruments.end() ? nullptr : &*found;
}

bool isBuiltInStock(std::string_view sym) {
    return std::find(builtInStocks.begin(), builtInStocks.end(), sym) != builtInStocks.end();
}

std::string futuresRoot(std::string_view channel) {
    constexpr std::string_view prefix = "futures:";
    if (!channel.starts_with(prefix)) return {};
    const std::string_view root = withoutMonth(channel.substr(prefix.size()));
    return builtInFuture(root) ? std::string(root) : std::string();
}

std::optional<PairedInstrument> pairedInstrument(std::string_view sym) {
    const BuiltInFuture* own = builtInFuture(sym);
    const BuiltInFuture* row = own ? builtInFuture(own->pair) : nullptr;
    if (!row) return std::nullopt;
    return PairedInstrument{std::string(row->sym), std::string(row->contract)};
}

std::optional<std::string> builtInIndexSource(std::string_view root) {
    const BuiltInFuture* row = builtInFuture(root);
    if (!row || row->index.empty()) return std::nullopt;
    return std::string(row->index);
}

double hfScaleFor(std::string_view root, std::string_view source) {
    constexpr double standard = 0.0000002;
    if (root == "NQ") return source == "QQQ" ? standard : 0.0000015;
    if (root == "ES") return source == "SPY" ? standard : 0.00000025;
    if (root == "RTY") return 0.0000005;
    if (root == "YM") return 0.0001;
    if (root == "GC") return 0.000004;
    if (root == "CL") return 0.000005;
    return standard;
}

}  // namespace vmr
