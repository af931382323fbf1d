#include "tests/chart/RecordingGpu.h"

#include <algorithm>

namespace vmr::test {

namespace {

struct Format {
    std::size_t stride;
    std::size_t uniforms;
};
// flat, ribbon, marker, text
constexpr Format formats[] = {
    {sizeof(ChartVertex), 4}, {sizeof(LineVertex), 8}, {sizeof(MarkerVertex), 8}, {sizeof(TextVertex), 4}};
const Format& formatOf(Pipeline pipeline) { return formats[static_cast<std::size_t>(pipeline)]; }

}  // namespace

GpuBuffer RecordingGpu::makeBuffer(std::span<const std::byte> bytes) {
    if (bytes.empty()) fault("retained buffer of no bytes");
    ++buffersMade;
    buffers_[++last_] = {{bytes.begin(), bytes.end()}, false, -1};
    return last_;
}

bool RecordingGpu::holds(GpuBuffer buffer, std::span<const std::byte> bytes) const {
    return std::ranges::equal(buffers_.at(buffer).bytes, bytes);
}

GpuBuffer RecordingGpu::makeArena(std::size_t size) {
    ++arenasMade;
    buffers_[++last_] = {std::vector<std::byte>(size), true, -1};
    return last_;
}

std::span<std::byte> RecordingGpu::arenaBytes(GpuBuffer arena) { return buffers_.at(arena).bytes; }

void RecordingGpu::release(GpuBuffer buffer) {
    const auto found = buffers_.find(buffer);
    if (found == buffers_.end() || found->second.releasedIn >= 0) return fault("released a buffer that is not held");
    found->second.releasedIn = frames;
}

void RecordingGpu::beginFrame(double w, double h, double ratio) {
    if (inFrame_) fault("frame within a frame");
    inFrame_ = true;
    ++frames;
    width = w;
    height = h;
    pixelRatio = ratio;
    draws.clear();
    std::erase_if(buffers_, [&](const auto& entry) {
        return entry.second.releasedIn >= 0 && entry.second.releasedIn + 2 < frames;
    });
    state_ = {};
}

void RecordingGpu::setPipeline(Pipeline pipeline) {
    state_.pipeline = pipeline;
    state_.uniformCount = 0;
}

void RecordingGpu::setUniforms(std::span<const float> values) {
    if (values.size() != formatOf(state_.pipeline).uniforms) return fault("wrong number of uniforms");
    std::copy(values.begin(), values.end(), state_.uniforms.begin());
    state_.uniformCount = values.size();
}

void RecordingGpu::draw(Primitive primitive, GpuBuffer buffer, std::size_t byteOffset, std::size_t vertexCount) {
    const auto found = buffers_.find(buffer);
    if (!inFrame_) return fault("draw outside a frame");
    if (found == buffers_.end() || found->second.releasedIn >= 0) return fault("draw from a buffer that is not held");
    const Format& format = formatOf(state_.pipeline);
    const std::size_t shape = primitive == Primitive::triangles ? 3 : primitive == Primitive::lines ? 2 : 4;
    if (state_.uniformCount != format.uniforms) fault("draw without uniforms");
    if (vertexCount == 0 || vertexCount % shape != 0) fault("vertex count fits no shape");
    if (byteOffset + vertexCount * format.stride > found->second.bytes.size()) return fault("draw outside the buffer");
    if (found->second.arena && byteOffset % 256 != 0) fault("arena offset not aligned");
    state_.primitive = primitive;
    state_.buffer = buffer;
    state_.offset = byteOffset;
    state_.count = vertexCount;
    state_.retained = !found->second.arena;
    draws.push_back(state_);
}

void RecordingGpu::endFrame() {
    if (!inFrame_) fault("end without a frame");
    inFrame_ = false;
}

std::size_t RecordingGpu::buffersAlive() const {
    return static_cast<std::size_t>(
        std::count_if(buffers_.begin(), buffers_.end(), [](const auto& entry) { return entry.second.releasedIn < 0; }));
}

std::array<double, 2> RecordingGpu::screen(const DrawCall& call, float x, float y) const {
    const float clipX = x * call.uniforms[0] + call.uniforms[1];
    const float clipY = y * call.uniforms[2] + call.uniforms[3];
    return {(clipX + 1.0) * 0.5 * width, (1.0 - clipY) * 0.5 * height};
}

}  // namespace vmr::test
