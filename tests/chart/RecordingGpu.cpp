#include "tests/chart/RecordingGpu.h"

namespace vmr::test {

GpuBuffer RecordingGpu::makeBuffer(std::span<const std::byte> bytes) {
    if (bytes.empty()) fault("retained buffer of no bytes");
    ++buffersMade;
    buffers_[++last_] = {{bytes.begin(), bytes.end()}, false, -1};
    return last_;
}

GpuBuffer RecordingGpu::makeArena(std::size_t size) {
    ++arenasMade;
    buffers_[++last_] = {std::vector<std::byte>(size), true, -1};
    return last_;
}

void RecordingGpu::release(GpuBuffer buffer) {
    const auto found = buffers_.find(buffer);
    if (found == buffers_.end() || wasReleased(*found)) return fault("released a buffer that is not held");
    found->second.releasedIn = frames_;
}

void RecordingGpu::beginFrame(double w, double h, double) {
    if (inFrame_) fault("frame within a frame");
    inFrame_ = true;
    ++frames_;
    width = w;
    height = h;
    draws.clear();
    std::erase_if(buffers_, [&](const auto& e) { return wasReleased(e) && e.second.releasedIn + 2 < frames_; });
    state_ = {};
}

void RecordingGpu::setPipeline(Pipeline pipeline) {
    state_.pipeline = pipeline;
    state_.uniformCount = 0;
}

void RecordingGpu::setUniforms(std::span<const float> values) {
    const bool withView = state_.pipeline == Pipeline::ribbon || state_.pipeline == Pipeline::marker;
    if (values.size() != (withView ? 8 : 4)) return fault("wrong number of uniforms");
    std::copy(values.begin(), values.end(), state_.uniforms.begin());
    state_.uniformCount = values.size();
}

void RecordingGpu::draw(Primitive primitive, GpuBuffer buffer, std::size_t byteOffset, std::size_t vertexCount) {
    const auto found = buffers_.find(buffer);
    if (!inFrame_) return fault("draw outside a frame");
    if (found == buffers_.end() || wasReleased(*found)) return fault("draw from a buffer that is not held");
    constexpr std::size_t strides[] = {sizeof(ChartVertex), sizeof(LineVertex), sizeof(MarkerVertex),
                                       sizeof(TextVertex)};
    const std::size_t stride = strides[static_cast<std::size_t>(state_.pipeline)];
    const std::size_t shape = primitive == Primitive::triangles ? 3 : primitive == Primitive::lines ? 2 : 4;
    const Buffer& from = found->second;
    if (state_.uniformCount == 0) fault("draw without uniforms");
    if (vertexCount == 0 || vertexCount % shape != 0) fault("vertex count fits no shape");
    if (byteOffset + vertexCount * stride > from.bytes.size()) return fault("draw outside the buffer");
    if (from.arena && byteOffset % 256 != 0) fault("arena offset not aligned");
    state_.primitive = primitive;
    state_.buffer = buffer;
    state_.offset = byteOffset;
    state_.count = vertexCount;
    state_.retained = !from.arena;
    draws.push_back(state_);
}

}  // namespace vmr::test
