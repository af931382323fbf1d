#include "sim/SimLists.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>
#include <variant>

#include "base/FileReplace.h"
#include "base/NumberText.h"

namespace vmr::sim {

namespace {
// What a row is sorted by: text or number, or nothing where it is not known.
using Key = std::variant<std::monostate, double, std::string>;

Key known(const std::optional<double>& value) { return value ? Key(*value) : Key(); }

Key keyOf(const Trade& trade, TradeColumn column) {
    switch (column) {
        case TradeColumn::time:
            return trade.closedAt;
        case TradeColumn::root:
            return trade.sym;
        case TradeColumn::side:
            return std::string(rawText(trade.side));
        case TradeColumn::qty:
            return static_cast<double>(trade.qty);
        case TradeColumn::entry:
            return trade.entry;
        case TradeColumn::exit:
            return trade.exit;
        case TradeColumn::result:
            return trade.pnl - trade.fees;
        case TradeColumn::fees:
            return trade.fees;
        case TradeColumn::exitKind:
            return exitKind(trade);
        case TradeColumn::mae:
            return known(trade.mae);
        case TradeColumn::mfe:
            return known(trade.mfe);
    }
    return {};
}

Key keyOf(const Fill& fill, FillColumn column) {
    switch (column) {
        case FillColumn::time:
            return fill.ts;
        case FillColumn::root:
            return fill.sym;
        case FillColumn::side:
            return std::string(rawText(fill.side));
        case FillColumn::qty:
            return static_cast<double>(fill.qty);
        case FillColumn::price:
            return fill.price;
        case FillColumn::fee:
            return fill.commission;
        case FillColumn::tag:
            return fill.tag;
    }
    return {};
}

Date dateOf(const Trade& trade) { return trade.closedAt; }
Date dateOf(const Fill& fill) { return fill.ts; }

template <class Row, class Column>
std::vector<Row> listed(std::span<const Row> rows, const ListFilter& filter, const DayOf& dayOf, Column by,
                        bool descending) {
    std::vector<std::pair<Key, const Row*>> keyed;
    for (const Row& row : rows) {
        if (!filter.root.empty() && row.sym != filter.root) continue;
        if (filter.day && dayOf(dateOf(row)) != *filter.day) continue;
        keyed.emplace_back(keyOf(row, by), &row);
    }
    std::stable_sort(keyed.begin(), keyed.end(), [descending](const auto& a, const auto& b) {
        if (a.first.index() != b.first.index()) return a.first.index() > b.first.index();
        return descending ? b.first < a.first : a.first < b.first;
    });
    std::vector<Row> out;
    out.reserve(keyed.size());
    for (const auto& [key, row] : keyed) out.push_back(*row);
    return out;
}

std::string isoTime(Date date) {
    using namespace std::chrono;
    constexpr double far = 1e11;  // keeps the year within the calendar
    const double ms = std::round(std::clamp(secondsSince1970(date), -far, far) * 1000);
    const sys_time<milliseconds> at{milliseconds(static_cast<std::int64_t>(ms))};
    const auto midnight = floor<days>(at);
    const year_month_day day{midnight};
    const hh_mm_ss time{at - midnight};
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:03}Z", int(day.year()), unsigned(day.month()),
                       unsigned(day.day()), time.hours().count(), time.minutes().count(), time.seconds().count(),
                       time.subseconds().count());
}

std::string cell(std::string_view text) {
    if (text.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(text);
    std::string quoted = "\"";
    for (const char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + '"';
}
std::string cell(double value) { return doubleText(value); }
std::string cell(std::int64_t value) { return std::to_string(value); }
std::string cell(const std::optional<double>& value) { return value ? doubleText(*value) : ""; }

template <class... Cells>
void addLine(std::string& csv, const Cells&... cells) {
    bool first = true;
    ((csv += (std::exchange(first, false) ? "" : ","), csv += cell(cells)), ...);
    csv += "\r\n";
}
}  // namespace

std::vector<Trade> listTrades(std::span<const Trade> trades, const ListFilter& filter, const DayOf& dayOf,
                              TradeColumn by, bool descending) {
    return listed(trades, filter, dayOf, by, descending);
}

std::vector<Fill> listFills(std::span<const Fill> fills, const ListFilter& filter, const DayOf& dayOf, FillColumn by,
                            bool descending) {
    return listed(fills, filter, dayOf, by, descending);
}

std::string exitKind(const Trade& trade) {
    return trade.exitTag == slTag || trade.exitTag == tpTag ? trade.exitTag : "manual";
}

std::string tradesCsv(std::span<const Trade> trades) {
    std::string csv = "root,side,qty,entryTime,entryPrice,exitTime,exitPrice,pnl,fees,exitKind,mae,mfe\r\n";
    for (const Trade& trade : trades)
        addLine(csv, std::string_view(trade.sym), rawText(trade.side), trade.qty,
                std::string_view(isoTime(trade.openedAt)), trade.entry, std::string_view(isoTime(trade.closedAt)),
                trade.exit, trade.pnl, trade.fees, std::string_view(exitKind(trade)), trade.mae, trade.mfe);
    return csv;
}

std::string fillsCsv(std::span<const Fill> fills) {
    std::string csv = "root,side,qty,time,price,fee,tag\r\n";
    for (const Fill& fill : fills)
        addLine(csv, std::string_view(fill.sym), rawText(fill.side), fill.qty, std::string_view(isoTime(fill.ts)),
                fill.price, fill.commission, std::string_view(fill.tag));
    return csv;
}

std::optional<std::string> writeCsv(const std::filesystem::path& file, std::string_view csv) {
    return replacePrivateFile(file, csv);
}

}  // namespace vmr::sim
