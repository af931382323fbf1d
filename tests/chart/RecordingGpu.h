// A graphics device that keeps frames as plain data, to be asserted on.
#pragma once

#include <array>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "chart/Gpu.h"
#include "chart/Vertices.h"

namespace vmr::test {

/// Records the newest frame. What it is asked to do wrongly (a buffer that was released, a range outside a buffer, a
/// wrong number of uniforms, a piece of an arena that is not aligned) is kept in `faults`.
class RecordingGpu final : public Gpu {
 public:
    struct DrawCall {
        Pipeline pipeline = Pipeline::flat;
        Primitive primitive = Primitive::triangles;
        GpuBuffer buffer = 0;
        std::size_t offset = 0;
        std::size_t count = 0;
        std::array<float, 8> uniforms{};
        std::size_t uniformCount = 0;
        bool retained = false;
    };

    GpuBuffer makeBuffer(std::span<const std::byte> bytes) override;
    bool holds(GpuBuffer buffer, std::span<const std::byte> bytes) const override;
    GpuBuffer makeArena(std::size_t size) override;
    std::span<std::byte> arenaBytes(GpuBuffer arena) override;
    void release(GpuBuffer buffer) override;
    void beginFrame(double width, double height, double pixelRatio) override;
    void setPipeline(Pipeline pipeline) override;
    void setUniforms(std::span<const float> values) override;
    void draw(Primitive primitive, GpuBuffer buffer, std::size_t byteOffset, std::size_t vertexCount) override;
    void endFrame() override;

    std::vector<DrawCall> draws;
    std::vector<std::string> faults;
    double width = 0, height = 0, pixelRatio = 0;
    int frames = 0;
    int buffersMade = 0;
    int arenasMade = 0;
    std::size_t buffersAlive() const;

    /// A draw call's vertices, as they are now.
    template <class Vertex>
    std::vector<Vertex> vertices(const DrawCall& call) const {
        std::vector<Vertex> list(call.count);
        std::memcpy(list.data(), buffers_.at(call.buffer).bytes.data() + call.offset, call.count * sizeof(Vertex));
        return list;
    }

    /// Where a place in data space or in pixels lands, in points from the view's top left.
    std::array<double, 2> screen(const DrawCall& call, float x, float y) const;

 private:
    struct Buffer {
        std::vector<std::byte> bytes;
        bool arena = false;
        int releasedIn = -1;  ///< number of the frame; -1 while it is held
    };
    void fault(const char* what) { faults.emplace_back(what); }

    std::map<GpuBuffer, Buffer> buffers_;
    GpuBuffer last_ = 0;
    bool inFrame_ = false;
    DrawCall state_;
};

}  // namespace vmr::test
