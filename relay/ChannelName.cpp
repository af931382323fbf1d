#include "relay/ChannelName.h"

#include <array>
#include <utility>

namespace vmr::relay {

namespace {
using Kind = MarketChannel::Kind;

constexpr std::array<std::pair<std::string_view, Kind>, 3> endings{
    {{":1m", Kind::minutes}, {":trades", Kind::trades}, {":quote", Kind::quote}}};

const Instrument* instrumentOf(std::string_view base) {
    const auto rest = [&](std::string_view prefix) { return base.substr(prefix.size()); };
    if (base.starts_with("futures:")) return findInstrument(Family::futures, contractRoot(rest("futures:")));
    if (base.starts_with("stocks:")) return findInstrument(Family::stocks, rest("stocks:"));
    if (base.starts_with("indices:")) return findInstrument(Family::indices, rest("indices:"));
    return nullptr;
}

bool offers(Family family, Kind kind) {
    if (kind == Kind::trades) return family != Family::indices;
    return kind != Kind::quote || family == Family::futures;
}
}  // namespace

std::string_view contractRoot(std::string_view contract) {
    std::size_t end = contract.size();
    while (end > 0 && contract[end - 1] >= '0' && contract[end - 1] <= '9') --end;
    const std::size_t digits = contract.size() - end;
    if (digits < 1 || digits > 4 || end < 2) return {};
    constexpr std::string_view months = "FGHJKMNQUVXZ";
    return months.find(contract[end - 1]) == months.npos ? std::string_view{} : contract.substr(0, end - 1);
}

std::optional<MarketChannel> marketChannel(std::string_view name) {
    MarketChannel channel;
    std::string_view base = name;
    for (const auto& [ending, kind] : endings) {
        if (name.ends_with(ending)) {
            channel.kind = kind;
            base = name.substr(0, name.size() - ending.size());
        }
    }
    channel.instrument = instrumentOf(base);
    if (!channel.instrument || !offers(channel.instrument->family, channel.kind)) return std::nullopt;
    channel.base = base;
    return channel;
}

}  // namespace vmr::relay
