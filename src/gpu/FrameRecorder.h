// Records the chart's frames for the render node.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <vector>

#include "gpu/Gpu.h"
#include "gpu/RecordedFrame.h"

namespace vmr {

/// The window's `Gpu`: takes a frame down as plain lists, which `swapFrame` exchanges with the render node's. Main
/// thread; `swapFrame` while the main thread is blocked by the scene graph. Recording a frame allocates nothing once
/// its lists have grown. An arena's vertices are taken when they are drawn, so they must be written by then. Misuse (an
/// unknown buffer, a draw beyond a buffer's end) is `fatal`.
class FrameRecorder final : public Gpu {
 public:
    GpuBuffer makeBuffer(std::span<const std::byte> bytes) override;
    bool holds(GpuBuffer buffer, std::span<const std::byte> bytes) const override;
    GpuBuffer makeArena(std::size_t size) override;
    std::span<std::byte> arenaBytes(GpuBuffer arena) override;
    void release(GpuBuffer buffer) override;
    void beginFrame(double width, double height, double pixelRatio) override;
    void setPipeline(Pipeline pipeline) override { pipeline_ = pipeline; }
    void setUniforms(std::span<const float> values) override;
    void draw(Primitive primitive, GpuBuffer buffer, std::size_t byteOffset, std::size_t vertexCount) override;
    void endFrame() override;

    /// Frames recorded so far.
    std::uint64_t framesRecorded() const { return framesRecorded_; }

    /// If a frame was recorded since the last call, exchanges it with `frame` and returns true. Otherwise, `frame`
    /// stays what it is.
    bool swapFrame(RecordedFrame& frame);

 private:
    struct Buffer {
        std::shared_ptr<const RetainedBytes> retained;  // null for an arena
        std::vector<std::byte> arena;
    };
    Buffer& find(GpuBuffer buffer);
    std::int32_t retainedIndex(const std::shared_ptr<const RetainedBytes>& retained);

    std::map<GpuBuffer, Buffer> buffers_;
    GpuBuffer ids_ = 0;
    RecordedFrame recording_;
    Pipeline pipeline_ = Pipeline::flat;
    bool inFrame_ = false;
    bool pending_ = false;
    std::uint64_t framesRecorded_ = 0;
};

}  // namespace vmr
