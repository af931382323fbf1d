#include "base/Log.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace vmr {

namespace {
struct CodePoint {
    std::uint32_t value;
    std::size_t bytes;  // that it takes; 0: what stands there is no UTF-8
};

// Overlong forms, surrogates and what lies above U+10FFFF count as no UTF-8.
CodePoint firstOf(std::string_view text) {
    const auto byteAt = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byteAt(0);
    if (lead < 0x80) return {lead, 1};
    const std::size_t bytes = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
    if (lead < 0xc2 || lead > 0xf4 || text.size() < bytes) return {0, 0};
    std::uint32_t value = lead & (0xffu >> (bytes + 1));
    for (std::size_t i = 1; i < bytes; ++i) {
        if ((byteAt(i) & 0xc0) != 0x80) return {0, 0};
        value = value << 6 | (byteAt(i) & 0x3fu);
    }
    constexpr std::uint32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
    if (value < least[bytes] || value > 0x10ffff || (value >= 0xd800 && value <= 0xdfff)) return {0, 0};
    return {value, bytes};
}

std::string hex(std::uint32_t value, int digits) {
    std::string out;
    while (digits-- > 0) out += "0123456789abcdef"[value >> (4 * digits) & 15];
    return out;
}

bool breaksLinesOrTurnsText(std::uint32_t value) {
    return (value >= 0x2028 && value <= 0x202e) || (value >= 0x2066 && value <= 0x2069);
}

// Nothing for what may stay as it is.
std::string shownInsteadOf(std::uint32_t value) {
    if (value == '\n') return "\\n";
    if (value == '\r') return "\\r";
    if (value == '\t') return "\\t";
    if (value < 0x20 || (value >= 0x7f && value < 0xa0)) return "\\x" + hex(value, 2);
    if (breaksLinesOrTurnsText(value)) return "\\u" + hex(value, 4);
    return {};
}

bool isPlain(char c) { return c >= 0x20 && c < 0x7f; }
}  // namespace

std::string harmlessText(std::string_view text) {
    std::string out;
    out.reserve(text.size() + 1);  // the log adds a line end
    while (!text.empty()) {
        const auto plain = static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isPlain) - text.begin());
        out += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty()) break;
        const CodePoint next = firstOf(text);
        const std::string shown = next.bytes > 0 ? shownInsteadOf(next.value) : "\xef\xbf\xbd";
        const std::size_t taken = std::max<std::size_t>(next.bytes, 1);
        out += shown.empty() ? text.substr(0, taken) : std::string_view(shown);
        text.remove_prefix(taken);
    }
    return out;
}

const Log& Log::standardOutput() {
    static const Log log;
    return log;
}

void Log::line(std::string_view text) const {
    const std::string whole = harmlessText(text) + '\n';
    if (!sink_) {
        // one call for a line: stdio lets no other thread in between
        std::fwrite(whole.data(), 1, whole.size(), stdout);
        std::fflush(stdout);
        return;
    }
    std::lock_guard lock(mutex_);
    sink_(whole);
}

void Log::lines(std::string_view text) const {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        line(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

}  // namespace vmr
