// Records frames as plain data, for the window's render node, for tests and for benchmarks.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <vector>

#include "gpu/Gpu.h"
#include "gpu/RecordedFrame.h"

namespace vmr {

/// Takes a frame down as plain lists, which `swapFrame` exchanges with those of whoever draws or reads it. Main thread;
/// `swapFrame` while the main thread is blocked by the scene graph. Recording a frame allocates nothing once its lists
/// have grown. An arena's vertices are taken when they are drawn, so they must be written by then.
///
/// Misuse is `fatal`: a frame within a frame, a draw outside one, without uniforms, of part of a shape, beyond its
/// buffer's end or from a place in an arena that is not aligned, uniforms that do not fit the pipeline, a buffer that
/// is empty, unknown or was released.
class FrameRecorder final : public Gpu {
 public:
    GpuBuffer makeBuffer(std::span<const std::byte> bytes) override;
    bool holds(GpuBuffer buffer, std::span<const std::byte> bytes) const override;
    GpuBuffer makeArena(std::size_t size) override;
    std::span<std::byte> arenaBytes(GpuBuffer arena) override;
    void release(GpuBuffer buffer) override;
    void beginFrame(double width, double height, double pixelRatio) override;
    void clear(const Rgba& color) override;
    void setClip(const PointRect& clip) override;
    void resetClip() override { clip_ = 0; }
    void setPipeline(Pipeline pipeline) override;
    void setUniforms(std::span<const float> values) override;
    void draw(Primitive primitive, GpuBuffer buffer, std::size_t byteOffset, std::size_t vertexCount) override;
    void endFrame() override;

    /// Frames recorded so far.
    std::uint64_t framesRecorded() const { return framesRecorded_; }
    /// Retained buffers and arenas made so far; what a change rebuilds shows in them.
    std::uint64_t buffersMade() const { return ids_ - arenasMade_; }
    std::uint64_t arenasMade() const { return arenasMade_; }
    /// Both kinds that were not released yet.
    std::size_t buffersHeld() const { return buffers_.size(); }

    /// If a frame was recorded since the last call, exchanges it with `frame` and returns true. Otherwise, `frame`
    /// stays what it is.
    bool swapFrame(RecordedFrame& frame);

 private:
    struct Buffer {
        std::shared_ptr<const RetainedBytes> retained;  // null for an arena
        std::vector<std::byte> arena;
    };
    Buffer& find(GpuBuffer buffer);
    std::size_t streamed(std::span<const std::byte> bytes);
    std::int32_t retainedIndex(const std::shared_ptr<const RetainedBytes>& retained);

    std::map<GpuBuffer, Buffer> buffers_;
    GpuBuffer ids_ = 0;
    std::uint64_t arenasMade_ = 0;
    RecordedFrame recording_;
    Pipeline pipeline_ = Pipeline::flat;
    std::uint32_t clip_ = 0;  // index into the frame's
    bool inFrame_ = false;
    bool uniformsSet_ = false;  // for the pipeline
    bool pending_ = false;
    std::uint64_t framesRecorded_ = 0;
};

}  // namespace vmr
