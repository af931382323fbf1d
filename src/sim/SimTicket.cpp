#include "sim/SimTicket.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "sim/Quantity.h"
#include "sim/SimTexts.h"
#include "sim/TickGrid.h"

namespace vmr::sim {

namespace {
Position positionOf(const SimEngine& engine, const std::string& root) {
    const auto found = engine.positions().find(root);
    return found == engine.positions().end() ? Position{} : found->second;
}

double tickOf(const SimEngine& engine, const std::string& root) {
    const Spec* spec = engine.specs().find(root);
    return spec ? spec->tick : 0;
}

std::string capitalized(std::string_view word) {
    std::string out(word);
    if (!out.empty() && out[0] >= 'a' && out[0] <= 'z') out[0] = static_cast<char>(out[0] - 'a' + 'A');
    return out;
}

std::optional<std::string> tooManyContracts(const OrderRequest& request, const SimEngine& engine) {
    const std::int64_t held = positionOf(engine, request.sym).qty;
    const auto after = sumOf(held, request.side == Side::buy ? request.qty : -request.qty);
    const std::int64_t size = after ? sizeOf(*after) : request.qty;
    const std::string name = capitalized(rawText(request.side)) + " market ";
    if (request.qty > usualContracts) return fmt::format("{}is for {} contracts", name, request.qty);
    if (size > usualContracts && size > sizeOf(held))
        return fmt::format("{}{} makes a position of {} contracts", name, request.qty, size);
    return std::nullopt;
}

std::optional<std::string> throughTheMarket(const OrderRequest& request, const SimEngine& engine) {
    const auto book = engine.book(request.sym);
    if (!book || !request.limit) return std::nullopt;
    const bool buys = request.side == Side::buy;
    const double touch = buys ? book->ask : book->bid;
    const double depth = (buys ? *request.limit - touch : touch - *request.limit) / touch;
    if (!(depth > usualDepth)) return std::nullopt;
    return fmt::format("{} limit {} is {:.1f} % through the market", capitalized(rawText(request.side)),
                       priceText(*request.limit), depth * 100);
}
}  // namespace

void SimTicket::keepWithinRange() {
    qty = std::clamp(qty, leastQty, mostQty);
    slTicks = std::clamp(slTicks, std::int64_t{0}, mostDistance);
    tpTicks = std::clamp(tpTicks, std::int64_t{0}, mostDistance);
}

std::int64_t SimTicket::toTicks(std::int64_t value, const SimEngine& engine, const std::string& root) const {
    constexpr double beyondTicks = 0x1p63;
    const double tick = tickOf(engine, root);
    if (useTicks || !(tick > 0)) return value;
    const double ticks = std::round(static_cast<double>(value) / tick);
    return std::abs(ticks) < beyondTicks ? static_cast<std::int64_t>(ticks) : value;
}

std::optional<BracketSpec> SimTicket::bracket(const SimEngine& engine, const std::string& root) const {
    if (!bracketOn) return std::nullopt;
    const auto leg = [&](std::int64_t distance) {
        const std::int64_t ticks = toTicks(distance, engine, root);
        return ticks >= 1 ? std::optional(ticks) : std::nullopt;
    };
    return BracketSpec{leg(slTicks), leg(tpTicks)};
}

void SimTicket::syncTicketDefaults(SimEngine& engine, const std::string& root) const {
    engine.ticketQty = qty;
    engine.ticketBracket = bracket(engine, root);
}

OrderRequest SimTicket::request(const SimEngine& engine, const std::string& root, Side side, OrderType type,
                                Price limit, Price stop) const {
    OrderRequest out{root, side, type, qty, limit, stop, bracket(engine, root)};
    const std::int64_t held = positionOf(engine, root).qty;
    if (type == OrderType::market && held != 0 && (held < 0) == (side == Side::buy))
        out.qty = cappedSum(qty, sizeOf(held));
    return out;
}

std::optional<std::string> SimTicket::place(SimEngine& engine, const std::string& root, Side side, OrderType type,
                                            Price limit, Price stop) const {
    if (root.empty()) return "the simulator supports futures only";
    if (type != OrderType::market && !limit && !stop)
        return "a " + std::string(rawText(type)) + " order needs a price above 0";
    syncTicketDefaults(engine, root);
    return request(engine, root, side, type, limit, stop).enter(engine);
}

std::string* SimTicket::fieldOf(OrderType type) {
    if (type == OrderType::limit) return &limitText;
    return type == OrderType::stop ? &stopText : nullptr;
}

void SimTicket::stepPrice(const SimEngine& engine, const std::string& root, OrderType type, int steps) {
    std::string* field = fieldOf(type);
    const double tick = tickOf(engine, root);
    if (!field || !(tick > 0)) return;
    const bool empty = field->find_first_not_of(" \t") == std::string::npos;
    const auto from = empty ? engine.last(root) : readPrice(*field);
    if (!from) return;
    const double price = TickGrid(tick).moved(engine.roundTick(root, *from), empty ? 0 : 2.0 * steps);
    if (price > 0 && std::isfinite(price)) *field = typedPrice(price);
}

std::optional<std::string> SimTicket::protectText(const SimEngine& engine, const std::string& sym,
                                                  std::string_view kind) const {
    const auto stands = [&](const Order& order) { return order.tag == kind && order.sym == sym; };
    if (positionOf(engine, sym).qty == 0 || !engine.specs().find(sym)) return std::nullopt;
    if (std::any_of(engine.orders().begin(), engine.orders().end(), stands)) return std::nullopt;
    return fmt::format("+ {} ({}{})", kind, kind == slTag ? slTicks : tpTicks, useTicks ? "t" : "pt");
}

std::optional<std::string> SimTicket::protect(SimEngine& engine, const std::string& sym, std::string_view kind) const {
    const Position position = positionOf(engine, sym);
    if (position.qty == 0) return "there is no position in " + sym;
    const double direction = (position.qty > 0) == (kind == tpTag) ? 1 : -1;
    const auto ticks = static_cast<double>(toTicks(kind == slTag ? slTicks : tpTicks, engine, sym));
    const double price = TickGrid(tickOf(engine, sym)).moved(position.avg, 2 * direction * ticks);
    if (auto problem = priceProblem(price)) return problem;
    if (!engine.setProtective(sym, kind, price)) return "nothing can stand at " + priceText(price);
    return std::nullopt;
}

std::optional<std::string> unusual(const OrderRequest& request, const SimEngine& engine) {
    if (request.type == OrderType::market) return tooManyContracts(request, engine);
    return request.type == OrderType::limit ? throughTheMarket(request, engine) : std::nullopt;
}

}  // namespace vmr::sim
