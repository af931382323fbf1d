// Random numbers that depend on a key alone, so that any minute of the market can be made without the ones before it.
#pragma once

#include <cmath>
#include <cstdint>
#include <string_view>

namespace vmr::relay {

/// Spreads the bits of `x` over the whole word.
inline std::uint64_t mixedBits(std::uint64_t x) {
    x += 0x9e3779b97f4a7c15ULL;
    x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9ULL;
    x = (x ^ (x >> 27)) * 0x94d049bb133111ebULL;
    return x ^ (x >> 31);
}

/// The key of one stream among many of the same seed.
inline std::uint64_t streamKey(std::uint64_t seed, std::string_view name, std::int64_t place) {
    std::uint64_t hash = 0xcbf29ce484222325ULL;
    for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3ULL;
    return mixedBits(mixedBits(seed ^ hash) ^ static_cast<std::uint64_t>(place));
}

/// The same numbers for the same key, on every machine.
class RandomStream {
 public:
    explicit RandomStream(std::uint64_t key) : state_(key) {}

    std::uint64_t next() { return mixedBits(state_ += 0x9e3779b97f4a7c15ULL); }

    /// In [0, 1).
    double uniform() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }

    /// Mean 1.
    double exponential() { return -std::log(1.0 - uniform()); }

    /// Standard normal with its tails.
    double normal() {
        const double radius = std::sqrt(2.0 * exponential());
        return radius * std::cos(6.283185307179586 * uniform());
    }

    /// Nearly normal (mean 0, variance 1, within ±3.5), many times cheaper.
    double quickNormal() {
        const std::uint64_t bits = next();
        const auto part = [&](int shift) { return static_cast<double>((bits >> shift) & 0xffff); };
        return (part(0) + part(16) + part(32) + part(48) - 131070.0) * (1.7320508075688772 / 65536.0);
    }

 private:
    std::uint64_t state_;
};

}  // namespace vmr::relay
