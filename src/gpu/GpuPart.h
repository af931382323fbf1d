// A rectangle of a frame as a view of its own.
#pragma once

#include "gpu/Gpu.h"

namespace vmr {

/// Lets what draws whole frames draw into a rectangle of another frame, which is under way meanwhile: several charts
/// share the frame of one item. Nothing is drawn outside the rectangle. Main thread.
class GpuPart final : public Gpu {
 public:
    /// `whole` must outlive it.
    explicit GpuPart(Gpu& whole) : whole_(whole) {}

    /// Where the next frames go, in points: a rectangle of a frame of this size, and the point of the drawn view that
    /// lies at its top left. Whole device pixels keep the drawing crisp.
    void place(const PointRect& cell, double frameWidth, double frameHeight, double originX, double originY);

    GpuBuffer makeBuffer(std::span<const std::byte> bytes) override { return whole_.makeBuffer(bytes); }
    bool holds(GpuBuffer buffer, std::span<const std::byte> bytes) const override {
        return whole_.holds(buffer, bytes);
    }
    GpuBuffer makeArena(std::size_t size) override { return whole_.makeArena(size); }
    std::span<std::byte> arenaBytes(GpuBuffer arena) override { return whole_.arenaBytes(arena); }
    void release(GpuBuffer buffer) override { whole_.release(buffer); }
    /// The pixel ratio is that of the whole frame.
    void beginFrame(double width, double height, double pixelRatio) override;
    void clear(const Rgba& color) override { whole_.clear(color); }
    void setClip(const PointRect& clip) override;
    void resetClip() override { whole_.setClip(cell_); }
    void setPipeline(Pipeline pipeline) override { whole_.setPipeline(pipeline); }
    void setUniforms(std::span<const float> values) override;
    void draw(Primitive primitive, GpuBuffer buffer, std::size_t byteOffset, std::size_t vertexCount) override {
        whole_.draw(primitive, buffer, byteOffset, vertexCount);
    }
    void endFrame() override { whole_.resetClip(); }

 private:
    Gpu& whole_;
    PointRect cell_;
    double frameWidth_ = 0, frameHeight_ = 0;
    double left_ = 0, top_ = 0;  // of the drawn view in the frame
    double width_ = 0, height_ = 0;
};

}  // namespace vmr
