// The account's trades and fills as lists that a person sorts, filters and takes along.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "sim/SimRecords.h"

namespace vmr::sim {

/// Which rows are listed; what is not set lets all pass.
struct ListFilter {
    std::string root;
    std::optional<std::int64_t> day;  ///< that of the end of a trade, of a fill
};

enum class TradeColumn { time, root, side, qty, entry, exit, result, fees, exitKind, mae, mfe };
enum class FillColumn { time, root, side, qty, price, fee, tag };

/// The calendar day that holds a date.
using DayOf = std::function<std::int64_t(Date)>;

/// The rows that pass, by the column. Equal ones stay as given; what is not known is listed last, either way.
std::vector<Trade> listTrades(std::span<const Trade> trades, const ListFilter& filter, const DayOf& dayOf,
                              TradeColumn by = TradeColumn::time, bool descending = true);
std::vector<Fill> listFills(std::span<const Fill> fills, const ListFilter& filter, const DayOf& dayOf,
                            FillColumn by = FillColumn::time, bool descending = true);

/// The order that ended a trade: "SL", "TP", or "manual" for any other.
std::string exitKind(const Trade& trade);

// As RFC 4180 has it, with a line of names. Times are ISO 8601 in UTC, numbers in the shortest form that reads back as
// the same; what is not known is empty.
std::string tradesCsv(std::span<const Trade> trades);
std::string fillsCsv(std::span<const Fill> fills);

/// Writes such a text to a file that its owner alone can read, in a folder that is there; what failed.
std::optional<std::string> writeCsv(const std::filesystem::path& file, std::string_view csv);

}  // namespace vmr::sim
