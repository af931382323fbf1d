#include "market/ClockSetting.h"

#include <date/tz.h>

#include <cmath>
#include <string>

#include "base/Clock.h"
#include "base/NumberText.h"
#include "market/SessionTime.h"

namespace vmr {

namespace {
// Reads fixed-width digits off the front.
class Reader {
 public:
    explicit Reader(std::string_view text) : text_(text) {}
    bool done() const { return text_.empty(); }
    bool take(char c) {
        if (text_.empty() || text_.front() != c) return false;
        text_.remove_prefix(1);
        return true;
    }
    std::optional<int> digits(std::size_t count) {
        if (text_.size() < count) return std::nullopt;
        int value = 0;
        for (char c : text_.substr(0, count)) {
            if (c < '0' || c > '9') return std::nullopt;
            value = value * 10 + (c - '0');
        }
        text_.remove_prefix(count);
        return value;
    }
    // What is behind a decimal point: digits to the end of the run, as a fraction below 1.
    std::optional<double> fraction() {
        std::size_t count = 0;
        while (count < text_.size() && text_[count] >= '0' && text_[count] <= '9') ++count;
        if (count == 0) return std::nullopt;
        const auto value = parseDouble("0." + std::string(text_.substr(0, count)));
        text_.remove_prefix(count);
        return value;
    }

 private:
    std::string_view text_;
};

struct TimeOfDay {
    double seconds = 0;
};

std::optional<TimeOfDay> readTime(Reader& in) {
    const auto hour = in.digits(2);
    if (!hour || *hour > 24 || !in.take(':')) return std::nullopt;
    const auto minute = in.digits(2);
    if (!minute || *minute > 59) return std::nullopt;
    double seconds = *hour * 3600 + *minute * 60;
    if (in.take(':')) {
        const auto second = in.digits(2);
        if (!second || *second > 60) return std::nullopt;
        seconds += *second;
        if (in.take('.')) {
            const auto part = in.fraction();
            if (!part) return std::nullopt;
            seconds += *part;
        }
    }
    if (seconds > 86400) return std::nullopt;
    return TimeOfDay{seconds};
}

// Seconds east of UTC; nothing when malformed. Called behind the sign.
std::optional<int> readOffset(Reader& in) {
    const auto hours = in.digits(2);
    if (!hours || *hours > 14) return std::nullopt;
    int seconds = *hours * 3600;
    if (in.done()) return seconds;
    in.take(':');
    const auto minutes = in.digits(2);
    if (!minutes || *minutes > 59) return std::nullopt;
    return seconds + *minutes * 60;
}

double fromNewYork(date::local_days day, double seconds) {
    static const date::time_zone* const zone = date::locate_zone("America/New_York");
    const double whole = std::floor(seconds);
    const auto local = day + std::chrono::seconds(static_cast<std::int64_t>(whole));
    const auto utc = zone->to_sys(local, date::choose::earliest);
    return static_cast<double>(utc.time_since_epoch().count()) + (seconds - whole);
}
}  // namespace

std::optional<double> parseMoment(std::string_view text) {
    Reader in(text);
    const auto year = in.digits(4);
    if (!year || !in.take('-')) return std::nullopt;
    const auto month = in.digits(2);
    if (!month || !in.take('-')) return std::nullopt;
    const auto dayOfMonth = in.digits(2);
    if (!dayOfMonth) return std::nullopt;
    const date::year_month_day ymd{date::year(*year), date::month(static_cast<unsigned>(*month)),
                                   date::day(static_cast<unsigned>(*dayOfMonth))};
    if (!ymd.ok()) return std::nullopt;
    double seconds = 0;
    if (in.take('T') || in.take(' ') || in.take('t')) {
        const auto time = readTime(in);
        if (!time) return std::nullopt;
        seconds = time->seconds;
    }
    const double utcMidnight = static_cast<double>(date::sys_days(ymd).time_since_epoch().count()) * 86400;
    if (in.done()) return fromNewYork(date::local_days(ymd), seconds);
    if (in.take('Z') || in.take('z')) {
        if (!in.done()) return std::nullopt;
        return utcMidnight + seconds;
    }
    const int sign = in.take('+') ? 1 : in.take('-') ? -1 : 0;
    if (sign == 0) return std::nullopt;
    const auto offset = readOffset(in);
    if (!offset || !in.done()) return std::nullopt;
    return utcMidnight + seconds - sign * *offset;
}

std::optional<ClockSetting> parseClockSetting(std::string_view text) {
    ClockSetting spec;
    if (const auto at = text.find('@'); at != std::string_view::npos) {
        const auto speed = parseDouble(text.substr(at + 1));
        if (!speed || !(*speed > 0 && *speed <= Clock::fastest)) return std::nullopt;
        spec.speed = *speed;
        text = text.substr(0, at);
    }
    const auto start = parseMoment(text);
    if (!start) return std::nullopt;
    spec.start = *start;
    return spec;
}

double practiceStart(double now) {
    SessionTime session;
    auto t = static_cast<std::int64_t>(std::floor(now));
    if (session.marketOpen(t, false)) return now;
    for (;;) {
        t = SessionTime::calendarSessionOpenSec(t, 1000);
        const int weekday = session.weekday(t);
        if (weekday >= 1 && weekday <= 5) return static_cast<double>(t);
        t -= 3600;
    }
}

}  // namespace vmr
