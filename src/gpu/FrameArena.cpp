#include "gpu/FrameArena.h"

#include <algorithm>
#include <cstring>

namespace vmr {

namespace {
std::size_t aligned(std::size_t offset) { return (offset + arenaAlignment - 1) / arenaAlignment * arenaAlignment; }
}  // namespace

FrameArena::~FrameArena() {
    releaseRetired();
    for (const Arena& arena : arenas_) {
        if (arena.buffer != 0) gpu_.release(arena.buffer);
    }
}

void FrameArena::releaseRetired() {
    for (const GpuBuffer buffer : retired_) gpu_.release(buffer);
    retired_.clear();
}

void FrameArena::beginFrame() {
    releaseRetired();
    arenaIdx_ = (arenaIdx_ + 1) % arenas_.size();
    arenaOffset_ = 0;
}

std::byte* FrameArena::makeRoom(std::size_t bytes) {
    Arena& arena = arenas_[arenaIdx_];
    const std::size_t offset = aligned(arenaOffset_);
    const std::size_t need = offset + bytes;
    if (arena.bytes.size() < need) {
        if (arena.buffer != 0) retired_.push_back(arena.buffer);
        arena.buffer = gpu_.makeArena(std::max<std::size_t>(need * 2, 65536));
        arena.bytes = gpu_.arenaBytes(arena.buffer);
    }
    return arena.bytes.data() + offset;
}

std::optional<DynUpload> FrameArena::keep(std::size_t bytes, std::size_t count) {
    if (bytes == 0) return std::nullopt;
    const std::size_t offset = aligned(arenaOffset_);
    arenaOffset_ = offset + bytes;
    return DynUpload{arenas_[arenaIdx_].buffer, offset, count};
}

std::optional<DynUpload> FrameArena::copy(std::span<const std::byte> bytes, std::size_t count) {
    if (bytes.empty()) return std::nullopt;
    std::memcpy(makeRoom(bytes.size()), bytes.data(), bytes.size());
    return keep(bytes.size(), count);
}

}  // namespace vmr
