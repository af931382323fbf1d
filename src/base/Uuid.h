// Random identities.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>

namespace vmr {

/// A 128-bit identity.
struct Uuid {
    std::array<std::uint8_t, 16> bytes{};
    bool operator==(const Uuid&) const = default;
    auto operator<=>(const Uuid&) const = default;
    /// 36 characters, upper case, with hyphens.
    std::string text() const;
    /// Reads what `text` gives, in either case; nothing for anything else.
    static std::optional<Uuid> parse(std::string_view text);
};

/// Makes version-4 identities. One thread.
class UuidSource {
 public:
    /// Seeded from the system's entropy.
    UuidSource();
    /// Always the same identities for the same seed.
    explicit UuidSource(std::uint64_t seed);
    Uuid next();

 private:
    std::mt19937_64 random_;
};

}  // namespace vmr
