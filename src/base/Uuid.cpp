#include "base/Uuid.h"

namespace vmr {

std::string Uuid::text() const {
    constexpr char digits[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(36);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) out += '-';
        out += digits[bytes[i] >> 4];
        out += digits[bytes[i] & 15];
    }
    return out;
}

std::optional<Uuid> Uuid::parse(std::string_view text) {
    if (text.size() != 36) return std::nullopt;
    Uuid id;
    std::size_t digit = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const char lower = static_cast<char>(c | 0x20);
        const bool hyphen = i == 8 || i == 13 || i == 18 || i == 23;
        if (hyphen && c == '-') continue;
        int value;
        if (!hyphen && c >= '0' && c <= '9')
            value = c - '0';
        else if (!hyphen && lower >= 'a' && lower <= 'f')
            value = lower - 'a' + 10;
        else
            return std::nullopt;
        auto& byte = id.bytes[digit++ / 2];
        byte = static_cast<std::uint8_t>(byte << 4 | value);
    }
    return id;
}

namespace {
std::uint64_t entropy() {
    std::random_device device;
    return (static_cast<std::uint64_t>(device()) << 32) ^ device();
}
}  // namespace

UuidSource::UuidSource() {
    std::seed_seq seed{static_cast<std::uint32_t>(entropy()), static_cast<std::uint32_t>(entropy()),
                       static_cast<std::uint32_t>(entropy()), static_cast<std::uint32_t>(entropy())};
    random_.seed(seed);
}

UuidSource::UuidSource(std::uint64_t seed) : random_(seed) {}

Uuid UuidSource::next() {
    Uuid id;
    for (std::size_t half = 0; half < 2; ++half) {
        std::uint64_t bits = random_();
        for (std::size_t i = 0; i < 8; ++i, bits >>= 8) id.bytes[half * 8 + i] = static_cast<std::uint8_t>(bits);
    }
    id.bytes[6] = static_cast<std::uint8_t>((id.bytes[6] & 0x0f) | 0x40);
    id.bytes[8] = static_cast<std::uint8_t>((id.bytes[8] & 0x3f) | 0x80);
    return id;
}

}  // namespace vmr
