// A graphics device that keeps frames as plain data, to be asserted on.
#pragma once

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "gpu/Gpu.h"
#include "gpu/Vertices.h"

namespace vmr::test {

/// Records the newest frame. What it is asked to do wrongly (a buffer that was released, a range outside a buffer, a
/// wrong number of uniforms, a piece of an arena that is not aligned) is kept in `faults`.
class RecordingGpu final : public Gpu {
 public:
    struct DrawCall {
        Pipeline pipeline = Pipeline::flat;
        Primitive primitive = Primitive::triangles;
        GpuBuffer buffer = 0;
        std::size_t offset = 0, count = 0;
        std::array<float, 8> uniforms{};
        std::size_t uniformCount = 0;
        bool retained = false;
    };

    GpuBuffer makeBuffer(std::span<const std::byte> bytes) override;
    bool holds(GpuBuffer buffer, std::span<const std::byte> bytes) const override {
        return std::ranges::equal(buffers_.at(buffer).bytes, bytes);
    }
    GpuBuffer makeArena(std::size_t size) override;
    std::span<std::byte> arenaBytes(GpuBuffer arena) override { return buffers_.at(arena).bytes; }
    void release(GpuBuffer buffer) override;
    void beginFrame(double w, double h, double pixelRatio) override;
    void setPipeline(Pipeline pipeline) override;
    void setUniforms(std::span<const float> values) override;
    void draw(Primitive primitive, GpuBuffer buffer, std::size_t byteOffset, std::size_t vertexCount) override;
    void endFrame() override { inFrame_ = false; }

    std::vector<DrawCall> draws;
    std::vector<std::string> faults;
    double width = 0, height = 0;
    int buffersMade = 0, arenasMade = 0;
    std::size_t buffersAlive() const {
        return buffers_.size() - static_cast<std::size_t>(std::ranges::count_if(buffers_, wasReleased));
    }

    /// A draw call's vertices, as they are now.
    template <class Vertex>
    std::vector<Vertex> vertices(const DrawCall& call) const {
        std::vector<Vertex> list(call.count);
        std::memcpy(list.data(), buffers_.at(call.buffer).bytes.data() + call.offset, call.count * sizeof(Vertex));
        return list;
    }

    /// Where a place in data space or in pixels lands, in points from the view's top left.
    std::array<double, 2> screen(const DrawCall& call, float x, float y) const {
        const float clipX = x * call.uniforms[0] + call.uniforms[1], clipY = y * call.uniforms[2] + call.uniforms[3];
        return {(clipX + 1.0) * 0.5 * width, (1.0 - clipY) * 0.5 * height};
    }

 private:
    struct Buffer {
        std::vector<std::byte> bytes;
        bool arena = false;
        int releasedIn = -1;  ///< number of the frame; -1 while it is held
    };
    static bool wasReleased(const std::pair<const GpuBuffer, Buffer>& entry) { return entry.second.releasedIn >= 0; }
    void fault(const char* what) { faults.emplace_back(what); }

    std::map<GpuBuffer, Buffer> buffers_;
    GpuBuffer last_ = 0;
    int frames_ = 0;
    bool inFrame_ = false;
    DrawCall state_;
};

}  // namespace vmr::test
