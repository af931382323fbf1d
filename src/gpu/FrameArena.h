// Memory for what a frame draws once: three growing arenas in turn.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "gpu/Gpu.h"
#include "gpu/Vertices.h"

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

    /// Copies a list of vertices. Nothing for an empty one.
    template <class Vertices>
    std::optional<DynUpload> uploadDyn(const Vertices& list) {
        const std::span all(list);
        return copy(std::as_bytes(all), all.size());
    }

    /// Room for up to `most` vertices, to be written in place and then kept by `commit`. Only the newest room may be
    /// written, and only until the next call.
    template <class Vertex>
    std::span<Vertex> reserve(std::size_t most) {
        std::byte* room = makeRoom(most * sizeof(Vertex));
        return {reinterpret_cast<Vertex*>(room), most};
    }
    /// Keeps the first `count` vertices of the newest room. Nothing for 0, and then nothing of the arena is used.
    template <class Vertex>
    std::optional<DynUpload> commit(std::size_t count) {
        return keep(count * sizeof(Vertex), count);
    }

 private:
    struct Arena {
        GpuBuffer buffer = 0;
        std::span<std::byte> bytes;
    };
    std::optional<DynUpload> copy(std::span<const std::byte> bytes, std::size_t count);
    std::byte* makeRoom(std::size_t bytes);
    std::optional<DynUpload> keep(std::size_t bytes, std::size_t count);

    void releaseRetired();

    Gpu& gpu_;
    std::array<Arena, 3> arenas_;
    std::vector<GpuBuffer> retired_;  ///< outgrown in this frame, which may still draw from them
    std::size_t arenaIdx_ = 0;
    std::size_t arenaOffset_ = 0;
};

}  // namespace vmr
