#include "gpu/FrameRecorder.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "base/Fatal.h"

namespace vmr {

namespace {

std::size_t uniformFloats(Pipeline pipeline) {
    return pipeline == Pipeline::flat || pipeline == Pipeline::text ? 4 : 8;
}

std::size_t shapeVertices(Primitive primitive) {
    return primitive == Primitive::triangles ? 3 : primitive == Primitive::lines ? 2 : 4;
}

/// The edge of a device pixel that is nearest to `points`, within a view of `size` points. The view's end is that of
/// its last pixel, of which it may cover a part only.
int pixelEdge(double points, double size, double ratio) {
    constexpr double largest = 1e6;  // no view has as many pixels, and an endless one has an end
    const double whole = size * ratio < largest ? std::ceil(size * ratio) : largest;
    const double pixels = points < size ? std::min(std::round(points * ratio), whole) : whole;
    return pixels > 0 ? static_cast<int>(pixels) : 0;
}

}  // namespace

GpuBuffer FrameRecorder::makeBuffer(std::span<const std::byte> bytes) {
    if (bytes.empty()) fatal("chart: a GPU buffer of no bytes");
    auto retained = std::make_shared<RetainedBytes>();
    retained->id = ++ids_;
    retained->bytes.assign(bytes.begin(), bytes.end());
    buffers_[ids_].retained = std::move(retained);
    return ids_;
}

bool FrameRecorder::holds(GpuBuffer buffer, std::span<const std::byte> bytes) const {
    const auto found = buffers_.find(buffer);
    if (found == buffers_.end() || !found->second.retained) return false;
    const auto& held = found->second.retained->bytes;
    return held.size() == bytes.size() && std::memcmp(held.data(), bytes.data(), held.size()) == 0;
}

GpuBuffer FrameRecorder::makeArena(std::size_t size) {
    ++arenasMade_;
    buffers_[++ids_].arena.resize(size);
    return ids_;
}

FrameRecorder::Buffer& FrameRecorder::find(GpuBuffer buffer) {
    const auto found = buffers_.find(buffer);
    if (found == buffers_.end()) fatal("chart: a GPU buffer was used that does not exist");
    return found->second;
}

std::span<std::byte> FrameRecorder::arenaBytes(GpuBuffer arena) { return find(arena).arena; }

void FrameRecorder::release(GpuBuffer buffer) {
    if (buffers_.erase(buffer) == 0) fatal("chart: a GPU buffer was released that does not exist");
}

void FrameRecorder::beginFrame(double width, double height, double pixelRatio) {
    if (inFrame_) fatal("chart: a frame within a frame");
    recording_.clear();
    recording_.width = width;
    recording_.height = height;
    recording_.pixelRatio = pixelRatio;
    recording_.uniforms.push_back({1, 0, 1, 0, 0, 0, 0, 0});
    recording_.clips.push_back({0, 0, pixelEdge(width, width, pixelRatio), pixelEdge(height, height, pixelRatio)});
    clip_ = 0;
    setPipeline(Pipeline::flat);
    inFrame_ = true;
    pending_ = false;
}

void FrameRecorder::clear(const Rgba& color) {
    if (!inFrame_) fatal("chart: a clear outside a frame");
    constexpr std::array<std::array<float, 2>, 6> corners{{{-1, -1}, {1, -1}, {1, 1}, {-1, -1}, {1, 1}, {-1, 1}}};
    std::array<ChartVertex, corners.size()> quad;
    for (std::size_t i = 0; i < quad.size(); ++i) quad[i] = {{corners[i][0], corners[i][1]}, color};
    RecordedFrame::Draw call;
    call.clip = clip_;
    call.opaque = true;  // its uniforms are the first ones, which change nothing
    call.byteOffset = streamed(std::as_bytes(std::span(quad)));
    call.vertexCount = quad.size();
    recording_.draws.push_back(call);
}

void FrameRecorder::setClip(const PointRect& clip) {
    if (!inFrame_) fatal("chart: a clip outside a frame");
    const double width = recording_.width, height = recording_.height, ratio = recording_.pixelRatio;
    clip_ = static_cast<std::uint32_t>(recording_.clips.size());
    auto& pixels = recording_.clips.emplace_back();
    const bool finite = std::isfinite(clip.x + clip.right()) && std::isfinite(clip.y + clip.bottom());
    if (!finite || !(clip.width > 0) || !(clip.height > 0)) return;
    pixels = {pixelEdge(clip.x, width, ratio), pixelEdge(clip.y, height, ratio), pixelEdge(clip.right(), width, ratio),
              pixelEdge(clip.bottom(), height, ratio)};
}

std::size_t FrameRecorder::streamed(std::span<const std::byte> bytes) {
    const std::size_t offset = recording_.stream.size();  // strides are multiples of 4, so offsets stay aligned
    recording_.stream.insert(recording_.stream.end(), bytes.begin(), bytes.end());
    return offset;
}

void FrameRecorder::setPipeline(Pipeline pipeline) {
    pipeline_ = pipeline;
    uniformsSet_ = false;
}

void FrameRecorder::setUniforms(std::span<const float> values) {
    if (values.size() != uniformFloats(pipeline_)) fatal("chart: a wrong number of uniforms");
    std::copy(values.begin(), values.end(), recording_.uniforms.emplace_back().begin());
    uniformsSet_ = true;
}

std::int32_t FrameRecorder::retainedIndex(const std::shared_ptr<const RetainedBytes>& retained) {
    auto& list = recording_.retained;
    const auto found = std::find(list.begin(), list.end(), retained);
    const auto index = found - list.begin();
    if (found == list.end()) list.push_back(retained);
    return static_cast<std::int32_t>(index);
}

void FrameRecorder::draw(Primitive primitive, GpuBuffer buffer, std::size_t byteOffset, std::size_t vertexCount) {
    if (!inFrame_) fatal("chart: a draw outside a frame");
    if (vertexCount == 0) return;
    if (!uniformsSet_) fatal("chart: a draw without uniforms");
    if (vertexCount % shapeVertices(primitive) != 0) fatal("chart: a draw of part of a shape");
    const Buffer& from = find(buffer);
    const auto& bytes = from.retained ? from.retained->bytes : from.arena;
    const std::size_t size = vertexCount * vertexStride(pipeline_);
    if (byteOffset > bytes.size() || size > bytes.size() - byteOffset) fatal("chart: a draw beyond its buffer's end");
    if (!from.retained && byteOffset % arenaAlignment != 0) fatal("chart: a draw from a place that is not aligned");

    RecordedFrame::Draw call;
    call.pipeline = pipeline_;
    call.primitive = primitive;
    call.uniforms = static_cast<std::uint32_t>(recording_.uniforms.size() - 1);
    call.clip = clip_;
    call.vertexCount = vertexCount;
    if (from.retained) {
        call.source = retainedIndex(from.retained);
        call.byteOffset = byteOffset;
    } else {
        call.byteOffset = streamed(std::span(bytes).subspan(byteOffset, size));
    }
    recording_.draws.push_back(call);
}

void FrameRecorder::endFrame() {
    inFrame_ = false;
    pending_ = true;
    ++framesRecorded_;
}

bool FrameRecorder::swapFrame(RecordedFrame& frame) {
    if (!std::exchange(pending_, false)) return false;
    std::swap(recording_, frame);
    return true;
}

}  // namespace vmr
