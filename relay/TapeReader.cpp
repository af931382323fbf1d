#include "relay/TapeReader.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <vector>

#include "base/NumberText.h"

namespace vmr::relay {

namespace {
constexpr std::int64_t latest = 7258118400;  // 2200-01-01
constexpr std::size_t longestLine = 1 << 20;

std::string_view trimmed(std::string_view text) {
    const auto skip = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '"'; };
    while (!text.empty() && skip(text.front())) text.remove_prefix(1);
    while (!text.empty() && skip(text.back())) text.remove_suffix(1);
    return text;
}

std::optional<std::string_view> field(std::string_view line, int column) {
    for (; column > 0; --column) {
        const std::size_t comma = line.find(',');
        if (comma == line.npos) return std::nullopt;
        line.remove_prefix(comma + 1);
    }
    return trimmed(line.substr(0, line.find(',')));
}

int columnNamed(std::string_view header, std::initializer_list<std::string_view> names) {
    for (const std::string_view name : names) {
        for (int column = 0; auto text = field(header, column); ++column) {
            std::string lower(*text);
            std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) {
                return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : static_cast<char>(c);
            });
            if (lower == name) return column;
        }
    }
    return -1;
}

std::int64_t daysFromCivil(std::int64_t year, int month, int day) {
    year -= month <= 2;
    const std::int64_t era = year / 400;
    const std::int64_t yearOfEra = year - era * 400;
    const std::int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    return era * 146097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - 719468;
}

/// Takes a number of exactly `digits` digits off the front; -1 if there is none.
int takeDigits(std::string_view& text, std::size_t digits) {
    if (text.size() < digits) return -1;
    int value = 0;
    for (std::size_t i = 0; i < digits; ++i) {
        if (text[i] < '0' || text[i] > '9') return -1;
        value = value * 10 + (text[i] - '0');
    }
    text.remove_prefix(digits);
    return value;
}

bool take(std::string_view& text, std::string_view anyOf) {
    if (text.empty() || anyOf.find(text.front()) == anyOf.npos) return false;
    text.remove_prefix(1);
    return true;
}

std::int64_t takeFractionMs(std::string_view& text) {
    if (!take(text, ".,")) return 0;
    std::int64_t ms = 0;
    for (int scale = 100; !text.empty() && text.front() >= '0' && text.front() <= '9'; scale /= 10) {
        ms += (text.front() - '0') * scale;
        text.remove_prefix(1);
    }
    return ms;
}

std::optional<std::int64_t> takeOffset(std::string_view& text) {
    if (text.empty() || take(text, "Zz")) return 0;
    const bool behind = text.front() == '-';
    if (!take(text, "+-")) return std::nullopt;
    const int hours = takeDigits(text, 2);
    take(text, ":");
    const int minutes = text.empty() ? 0 : takeDigits(text, 2);
    if (hours < 0 || hours > 23 || minutes < 0 || minutes > 59) return std::nullopt;
    return (behind ? -1 : 1) * (hours * 3600 + minutes * 60);
}

std::optional<std::int64_t> isoTime(std::string_view text) {
    const int year = takeDigits(text, 4);
    if (year < 1970 || !take(text, "-")) return std::nullopt;
    const int month = takeDigits(text, 2);
    if (month < 1 || month > 12 || !take(text, "-")) return std::nullopt;
    const int day = takeDigits(text, 2);
    if (day < 1 || day > 31) return std::nullopt;
    std::int64_t seconds = daysFromCivil(year, month, day) * 86400;
    std::int64_t ms = 0;
    if (take(text, "T ")) {
        const int hour = takeDigits(text, 2);
        const bool colon = take(text, ":");
        const int minute = takeDigits(text, 2);
        const int second = take(text, ":") ? takeDigits(text, 2) : 0;
        if (!colon || hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 60)
            return std::nullopt;
        seconds += hour * 3600 + minute * 60 + second;
        ms = takeFractionMs(text);
    }
    const auto offset = takeOffset(text);
    if (!offset || !text.empty()) return std::nullopt;
    return (seconds - *offset) * 1000 + ms;
}

std::optional<std::int64_t> epochTime(std::string_view text) {
    if (auto whole = parseInt(text)) {  // a double cannot hold nanoseconds since 1970 exactly
        if (*whole < 0) return std::nullopt;
        if (*whole < 100000000000) return *whole * 1000;
        while (*whole >= 100000000000000) *whole /= 1000;
        return whole;
    }
    const auto seconds = parseDouble(text);
    if (!seconds || !(*seconds >= 0) || *seconds > 1e11) return std::nullopt;
    return static_cast<std::int64_t>(std::floor(*seconds * 1000 + 1e-3));
}

struct Columns {
    int time = -1, price = -1, size = -1;
};

/// Reads one row; what is wrong with it, if anything. A row without a price is skipped.
std::optional<std::string> readRow(std::string_view line, const Columns& columns,
                                   const std::function<void(const TapeRow&)>& row) {
    const auto priceText = field(line, columns.price);
    if (!priceText || priceText->empty()) return std::nullopt;
    const auto timeText = field(line, columns.time);
    const auto time = tapeTime(timeText.value_or(""));
    if (!time) return "\"" + std::string(timeText.value_or("")) + "\" is no time";
    const auto price = parseDouble(*priceText);
    if (!price || !std::isfinite(*price)) return "\"" + std::string(*priceText) + "\" is no price";
    const auto sizeText = columns.size < 0 ? std::nullopt : field(line, columns.size);
    const auto size = sizeText && !sizeText->empty() ? parseDouble(*sizeText) : 0.0;
    if (!size || !std::isfinite(*size) || *size < 0) return "\"" + std::string(*sizeText) + "\" is no size";
    row({*time, *price, *size});
    return std::nullopt;
}

/// Cuts what comes in pieces into lines and reads them.
class LineReader {
 public:
    explicit LineReader(const std::function<void(const TapeRow&)>& row) : row_(row) {}

    std::optional<std::string> take(std::string_view piece) {
        for (std::size_t end = piece.find('\n'); end != piece.npos; end = piece.find('\n')) {
            std::string_view text = piece.substr(0, end);
            if (!rest_.empty()) text = rest_.append(text);
            if (auto wrong = line(text)) return wrong;
            rest_.clear();
            piece.remove_prefix(end + 1);
        }
        rest_.append(piece);
        if (rest_.size() > longestLine) return "line " + std::to_string(number_ + 1) + " has no end";
        return std::nullopt;
    }

    std::optional<std::string> finish() {
        if (auto wrong = line(rest_)) return wrong;
        if (columns_.price < 0) return "it is empty";
        return std::nullopt;
    }

 private:
    std::optional<std::string> line(std::string_view text) {
        ++number_;
        if (trimmed(text).empty()) return std::nullopt;
        if (columns_.price < 0) return header(text);
        auto wrong = readRow(text, columns_, row_);
        if (wrong) wrong = "line " + std::to_string(number_) + ": " + *wrong;
        return wrong;
    }

    std::optional<std::string> header(std::string_view text) {
        if (text.starts_with("\xef\xbb\xbf")) text.remove_prefix(3);
        columns_.time = columnNamed(text, {"timestamp", "time", "ts", "datetime", "date"});
        columns_.price = columnNamed(text, {"price", "last", "trade_price"});
        columns_.size = columnNamed(text, {"size", "volume", "qty", "quantity"});
        if (columns_.time < 0) return "its first line names no time column such as timestamp";
        if (columns_.price < 0) return "its first line names no price column";
        return std::nullopt;
    }

    const std::function<void(const TapeRow&)>& row_;
    std::string rest_;
    Columns columns_;
    std::size_t number_ = 0;
};
}  // namespace

std::optional<std::int64_t> tapeTime(std::string_view text) {
    auto time = text.size() > 4 && text[4] == '-' ? isoTime(text) : epochTime(text);
    if (time && (*time < 0 || *time > latest * 1000)) time.reset();
    return time;
}

std::optional<std::string> readTape(const std::filesystem::path& file, const std::function<void(const TapeRow&)>& row) {
    const auto fault = [&](const std::string& text) { return "the tape " + file.string() + ": " + text; };
    std::error_code ignored;
    if (std::filesystem::is_directory(file, ignored)) return fault("it is a folder");
    const std::unique_ptr<gzFile_s, int (*)(gzFile)> in(gzopen(file.string().c_str(), "rb"), gzclose);
    if (!in) return fault("it cannot be opened");
    gzbuffer(in.get(), 1 << 17);

    LineReader lines(row);
    std::vector<char> piece(1 << 18);
    for (;;) {
        const int got = gzread(in.get(), piece.data(), static_cast<unsigned>(piece.size()));
        if (got > 0) {
            if (auto wrong = lines.take({piece.data(), static_cast<std::size_t>(got)})) return fault(*wrong);
            continue;
        }
        int code = Z_OK;
        gzerror(in.get(), &code);
        if (got < 0 || (code != Z_OK && code != Z_STREAM_END)) return fault("it is damaged or cut short");
        break;
    }
    if (auto wrong = lines.finish()) return fault(*wrong);
    return std::nullopt;
}

}  // namespace vmr::relay
