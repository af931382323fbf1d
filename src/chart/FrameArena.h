// Memory for what a frame draws once: three growing arenas in turn.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "chart/Gpu.h"
#include "chart/Vertices.h"

namespace vmr {

/// Where a list went.
struct DynUpload {
    GpuBuffer buffer = 0;
    std::size_t offset = 0;
    std::size_t count = 0;
};

/// Hands out arena memory within a frame, every piece 256-byte aligned. A piece stays where it is for the frame, also
/// when a later one makes the arena grow. The host must never read an arena more than two frames after its own frame.
class FrameArena {
 public:
    explicit FrameArena(Gpu& gpu) : gpu_(gpu) {}
    ~FrameArena();
    FrameArena(const FrameArena&) = delete;
    FrameArena& operator=(const FrameArena&) = delete;

    void beginFrame();

    /// Copies a list. Nothing for an empty one.
    std::optional<DynUpload> uploadDyn(std::span<const ChartVertex> list) {
        return copy(std::as_bytes(list), list.size());
    }
    std::optional<DynUpload> uploadDyn(std::span<const LineVertex> list) {
        return copy(std::as_bytes(list), list.size());
    }
    std::optional<DynUpload> uploadDyn(std::span<const TextVertex> list) {
        return copy(std::as_bytes(list), list.size());
    }

 private:
    struct Arena {
        GpuBuffer buffer = 0;
        std::span<std::byte> bytes;
    };
    std::optional<DynUpload> copy(std::span<const std::byte> bytes, std::size_t count);

    void releaseRetired();

    Gpu& gpu_;
    std::array<Arena, 3> arenas_;
    std::vector<GpuBuffer> retired_;  ///< outgrown in this frame, which may still draw from them
    std::size_t arenaIdx_ = 0;
    std::size_t arenaOffset_ = 0;
};

}  // namespace vmr
