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
