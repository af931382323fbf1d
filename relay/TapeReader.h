// Reads recorded trades from CSV, packed or not.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace vmr::relay {

/// One recorded trade.
struct TapeRow {
    std::int64_t timeMs = 0;  ///< milliseconds since 1970
    double price = 0;
    double size = 0;  ///< 0 when the tape has none
};

/// Reads `file`, plain or gzip, row by row in the file's order. Its first line names the columns, in any case: the time
/// (timestamp, time, ts, datetime or date), the price (price, last or trade_price) and, if there is one, the size
/// (size, volume, qty or quantity). A row without a price is left out. Nothing on success, else what is wrong and
/// where; rows before the fault have been handed over by then.
std::optional<std::string> readTape(const std::filesystem::path& file, const std::function<void(const TapeRow&)>& row);

/// Milliseconds since 1970 of an ISO 8601 moment (UTC unless it has an offset) or of a number since 1970: of seconds,
/// or if it is whole also of milliseconds, microseconds or nanoseconds, told apart by size. Nothing on anything else
/// and outside 1970 to 2200.
std::optional<std::int64_t> tapeTime(std::string_view text);

}  // namespace vmr::relay
