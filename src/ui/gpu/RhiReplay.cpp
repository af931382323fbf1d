#include "ui/gpu/RhiReplay.h"

#include <QFile>
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <utility>

#include "gpu/Vertices.h"

namespace vmr {

namespace {

constexpr int blockBytes = 112;               // mat4 place, vec4 map, vec4 view, vec4 device
constexpr std::size_t quadsPerBatch = 16384;  // what 16-bit indices reach
constexpr int placeFloats = 16;

struct Attributes {
    const char* vertexShader;
    const char* fragmentShader;
    std::vector<QRhiVertexInputAttribute> inputs;
};

QShader loadShader(const char* name) {
    QFile file(QStringLiteral(":/velmora/shaders/") + QLatin1String(name));
    return file.open(QIODevice::ReadOnly) ? QShader::fromSerialized(file.readAll()) : QShader();
}

Attributes attributesOf(Pipeline pipeline) {
    using A = QRhiVertexInputAttribute;
    switch (pipeline) {
        case Pipeline::box:
            return {
                "box.vert.qsb",
                "box.frag.qsb",
                {A(0, 0, A::Float4, offsetof(BoxVertex, corner)), A(0, 1, A::UNormByte4, offsetof(BoxVertex, color))}};
        case Pipeline::rounded:
            return {
                "rounded.vert.qsb",
                "rounded.frag.qsb",
                {A(0, 0, A::Float4, offsetof(RoundVertex, corner)), A(0, 1, A::Float, offsetof(RoundVertex, radius)),
                 A(0, 2, A::UNormByte4, offsetof(RoundVertex, color))}};
        case Pipeline::candle:
        case Pipeline::dense:
        case Pipeline::crowded:
            return {
                "candle.vert.qsb",
                pipeline == Pipeline::crowded ? "crowded.frag.qsb"
                : pipeline == Pipeline::dense ? "dense.frag.qsb"
                                              : "candle.frag.qsb",
                {A(0, 0, A::Float4, offsetof(CandleVertex, corner)), A(0, 1, A::Float4, offsetof(CandleVertex, body)),
                 A(0, 2, A::Float, offsetof(CandleVertex, fill)), A(0, 3, A::Float4, offsetof(CandleVertex, before)),
                 A(0, 4, A::UNormByte4, offsetof(CandleVertex, beforeLooks)),
                 A(0, 5, A::UNormByte4, offsetof(CandleVertex, color))}};
        case Pipeline::ribbon:
        case Pipeline::dashed:
            return {
                "ribbon.vert.qsb",
                pipeline == Pipeline::dashed ? "dashed.frag.qsb" : "ribbon.frag.qsb",
                {A(0, 0, A::Float4, offsetof(LineVertex, pos)), A(0, 1, A::Float2, offsetof(LineVertex, joined)),
                 A(0, 2, A::Float, offsetof(LineVertex, beside)), A(0, 3, A::UNormByte4, offsetof(LineVertex, color))}};
        case Pipeline::disc:
        case Pipeline::triangle:
            return {
                pipeline == Pipeline::disc ? "disc.vert.qsb" : "triangle.vert.qsb",
                pipeline == Pipeline::disc ? "disc.frag.qsb" : "triangle.frag.qsb",
                {A(0, 0, A::Float2, offsetof(MarkerVertex, center)), A(0, 1, A::Float2, offsetof(MarkerVertex, radius)),
                 A(0, 2, A::UNormByte4, offsetof(MarkerVertex, color))}};
        case Pipeline::text:
            return {"text.vert.qsb",
                    "text.frag.qsb",
                    {A(0, 0, A::Float2, offsetof(TextVertex, position)), A(0, 1, A::Float2, offsetof(TextVertex, uv)),
                     A(0, 2, A::UNormByte4, offsetof(TextVertex, color))}};
        case Pipeline::flat:
            break;
    }
    return {
        "flat.vert.qsb",
        "color.frag.qsb",
        {A(0, 0, A::Float2, offsetof(ChartVertex, position)), A(0, 1, A::UNormByte4, offsetof(ChartVertex, color))}};
}

/// From device pixels of the frame to those of the target, whose origin is the bottom left.
QRect scissorOf(const PixelRect& clip, const RhiPlacement& placement) {
    const QRect& view = placement.viewport;
    const QRect part(view.x() + clip.left, view.y() + view.height() - clip.bottom, clip.right - clip.left,
                     clip.bottom - clip.top);
    return part.intersected(placement.scissor);
}

std::vector<std::uint16_t> quadIndexList() {
    std::vector<std::uint16_t> out;
    out.reserve(quadsPerBatch * 6);
    for (std::size_t quad = 0; quad < quadsPerBatch; ++quad) {
        const auto base = static_cast<std::uint16_t>(quad * 4);
        for (const int corner : {0, 1, 2, 0, 2, 3}) out.push_back(static_cast<std::uint16_t>(base + corner));
    }
    return out;
}

}  // namespace

bool RhiReplay::fail(const char* what) {
    problem_ = what;
    return false;
}

bool RhiReplay::takeFrame(FrameRecorder& recorder) {
    if (!recorder.swapFrame(frame_)) return false;
    slotsUploaded_.clear();
    return true;
}

void RhiReplay::release() {
    prepared_ = false;
    for (auto& pipeline : pipelines_) pipeline.reset();
    pass_.reset();
    plainBindings_.reset();
    textBindings_.reset();
    sampler_.reset();
    atlas_.reset();
    stream_.reset();
    uniforms_.reset();
    quadIndices_.reset();
    quadIndicesUploaded_ = false;
    slotsUploaded_.clear();
    retained_.clear();
    atlasChanges_.clear();
    rhi_ = nullptr;
}

bool RhiReplay::prepare(const RhiTarget& target, const RhiPlacement& placement) {
    prepared_ = false;
    if (frame_.draws.empty() || placement.scissor.isEmpty()) return true;
    if (!target.complete()) return fail("the window gives the chart nothing to draw on");
    if (!ready(target)) return false;
    auto* batch = rhi_->nextResourceUpdateBatch();
    const bool uploaded = uploadRetained(*batch) && uploadAtlas(*batch);
    target.commands->resourceUpdate(batch);
    prepared_ = uploaded && uploadFrame(placement);
    if (prepared_) problem_.clear();
    return prepared_;
}

bool RhiReplay::ready(const RhiTarget& target) {
    if (!rhi_) {
        rhi_ = target.rhi;
        if (!makeShared()) {
            rhi_ = nullptr;
            return false;
        }
    }
    auto* pass = target.target->renderPassDescriptor();
    const bool same = pass_ && samples_ == target.target->sampleCount() && pass_->isCompatible(pass);
    return same || makePipelines(*target.target);
}

bool RhiReplay::makeShared() {
    uniformStride_ = static_cast<std::size_t>(rhi_->ubufAligned(blockBytes));
    uniforms_.reset(
        rhi_->newBuffer(QRhiBuffer::Dynamic, QRhiBuffer::UniformBuffer, static_cast<int>(uniformStride_ * 32)));
    stream_.reset(rhi_->newBuffer(QRhiBuffer::Dynamic, QRhiBuffer::VertexBuffer, 65536));
    quadIndices_.reset(rhi_->newBuffer(QRhiBuffer::Immutable, QRhiBuffer::IndexBuffer,
                                       static_cast<int>(quadsPerBatch * 6 * sizeof(std::uint16_t))));
    atlas_.reset(rhi_->newTexture(QRhiTexture::R8, QSize(1, 1)));
    sampler_.reset(rhi_->newSampler(QRhiSampler::Nearest, QRhiSampler::Nearest, QRhiSampler::None,
                                    QRhiSampler::ClampToEdge, QRhiSampler::ClampToEdge));
    if (!uniforms_->create() || !stream_->create() || !quadIndices_->create() || !atlas_->create() ||
        !sampler_->create()) {
        return fail("the graphics card refused the chart's buffers");
    }
    using Binding = QRhiShaderResourceBinding;
    const auto block = Binding::uniformBufferWithDynamicOffset(0, Binding::VertexStage, uniforms_.get(), blockBytes);
    plainBindings_.reset(rhi_->newShaderResourceBindings());
    plainBindings_->setBindings({block});
    textBindings_.reset(rhi_->newShaderResourceBindings());
    textBindings_->setBindings(
        {block, Binding::sampledTexture(1, Binding::FragmentStage, atlas_.get(), sampler_.get())});
    if (!plainBindings_->create() || !textBindings_->create()) {
        return fail("the graphics card refused the chart's bindings");
    }
    return true;
}

bool RhiReplay::makePipelines(QRhiRenderTarget& target) {
    pass_.reset(target.renderPassDescriptor()->newCompatibleRenderPassDescriptor());
    samples_ = target.sampleCount();
    for (int kind = 0; kind < kinds; ++kind) {
        auto& pipeline = pipelines_[static_cast<std::size_t>(kind)];
        pipeline = makePipeline(static_cast<Kind>(kind), samples_);
        if (!pipeline) {
            pass_.reset();
            return fail("the graphics card refused the chart's shaders");
        }
    }
    return true;
}

std::unique_ptr<QRhiGraphicsPipeline> RhiReplay::makePipeline(Kind kind, int samples) {
    const auto program = static_cast<Pipeline>(std::max(kind - flatLines, 0));
    const auto attributes = attributesOf(program);
    std::unique_ptr<QRhiGraphicsPipeline> out(rhi_->newGraphicsPipeline());
    out->setTopology(kind == flatLines ? QRhiGraphicsPipeline::Lines : QRhiGraphicsPipeline::Triangles);
    out->setShaderStages({{QRhiShaderStage::Vertex, loadShader(attributes.vertexShader)},
                          {QRhiShaderStage::Fragment, loadShader(attributes.fragmentShader)}});
    QRhiVertexInputLayout layout;
    layout.setBindings({QRhiVertexInputBinding(static_cast<quint32>(vertexStride(program)))});
    layout.setAttributes(attributes.inputs.begin(), attributes.inputs.end());
    out->setVertexInputLayout(layout);
    QRhiGraphicsPipeline::TargetBlend blend;
    blend.enable = kind != opaqueKind;  // a rasteriser then need not read what it covers
    blend.srcColor = blend.srcAlpha = QRhiGraphicsPipeline::SrcAlpha;
    blend.dstColor = blend.dstAlpha = QRhiGraphicsPipeline::OneMinusSrcAlpha;
    out->setTargetBlends({blend});
    out->setFlags(QRhiGraphicsPipeline::UsesScissor);
    out->setCullMode(QRhiGraphicsPipeline::None);
    out->setSampleCount(samples);
    out->setShaderResourceBindings(kind == textKind ? textBindings_.get() : plainBindings_.get());
    out->setRenderPassDescriptor(pass_.get());
    if (!out->create()) out.reset();
    return out;
}

QRhiBuffer* RhiReplay::retainedBuffer(GpuBuffer id) const {
    const auto found =
        std::find_if(retained_.begin(), retained_.end(), [&](const RetainedCopy& copy) { return copy.id == id; });
    return found == retained_.end() ? nullptr : found->buffer.get();
}

bool RhiReplay::uploadRetained(QRhiResourceUpdateBatch& batch) {
    std::erase_if(retained_, [](const RetainedCopy& copy) { return copy.bytes.expired(); });
    for (const auto& bytes : frame_.retained) {
        if (retainedBuffer(bytes->id)) continue;
        std::unique_ptr<QRhiBuffer> buffer(
            rhi_->newBuffer(QRhiBuffer::Immutable, QRhiBuffer::VertexBuffer, static_cast<int>(bytes->bytes.size())));
        if (!buffer->create()) return fail("the graphics card is out of memory for the chart");
        batch.uploadStaticBuffer(buffer.get(), bytes->bytes.data());
        uploadedBytes_ += bytes->bytes.size();
        retained_.push_back({bytes, bytes->id, std::move(buffer)});
    }
    if (!quadIndicesUploaded_) {
        batch.uploadStaticBuffer(quadIndices_.get(), quadIndexList().data());
        uploadedBytes_ += static_cast<std::uint64_t>(quadIndices_->size());
        quadIndicesUploaded_ = true;
    }
    return true;
}

bool RhiReplay::uploadAtlas(QRhiResourceUpdateBatch& batch) {
    for (const auto& change : atlasChanges_) {
        if (atlas_->pixelSize() != change.size) {
            atlas_->setPixelSize(change.size);
            if (!atlas_->create() || !textBindings_->create()) return fail("the graphics card refused the glyph atlas");
        }
        uploadedBytes_ += static_cast<std::uint64_t>(change.pixels.sizeInBytes());
        QRhiTextureSubresourceUploadDescription part(change.pixels);
        part.setDestinationTopLeft(change.at);
        batch.uploadTexture(atlas_.get(), QRhiTextureUploadDescription({QRhiTextureUploadEntry(0, 0, part)}));
    }
    atlasChanges_.clear();
    return true;
}

bool RhiReplay::growDynamic(std::unique_ptr<QRhiBuffer>& buffer, int usage, std::size_t size) {
    if (static_cast<std::size_t>(buffer->size()) >= size) return true;
    if (size > static_cast<std::size_t>(1) << 30) return fail("the chart's frame is too large");
    buffer->setUsage(QRhiBuffer::UsageFlags(QFlag(usage)));
    buffer->setSize(static_cast<int>(size + size / 2));
    slotsUploaded_.clear();
    return buffer->create() || fail("the graphics card is out of memory for the chart");
}

// A dynamic buffer has one copy for each frame in flight, and only the one of the current slot can be written. A slot
// gets the frame when it first draws it and keeps it, so that repaints upload nothing once every slot has had its turn,
// a second one at most. The slots are those of the graphics interface, whichever swap chain or read-back is drawn, so
// other windows do not matter. Static buffers would have one copy, but every frame of a moving chart would pay for a
// staging copy and a barrier.
bool RhiReplay::uploadFrame(const RhiPlacement& placement) {
    if (std::exchange(scaleX_, placement.scaleX) != placement.scaleX) slotsUploaded_.clear();
    if (std::exchange(scaleY_, placement.scaleY) != placement.scaleY) slotsUploaded_.clear();
    const auto slot = static_cast<std::size_t>(std::max(rhi_->currentFrameSlot(), 0));
    if (slot < slotsUploaded_.size() && slotsUploaded_[slot]) return true;
    if (!uploadStream() || !uploadUniforms(placement)) return false;
    if (slotsUploaded_.size() <= slot) slotsUploaded_.resize(slot + 1);
    slotsUploaded_[slot] = true;
    return true;
}

bool RhiReplay::uploadStream() {
    if (frame_.stream.empty()) return true;
    if (!growDynamic(stream_, QRhiBuffer::VertexBuffer, frame_.stream.size())) return false;
    char* to = stream_->beginFullDynamicBufferUpdateForCurrentFrame();
    if (!to) return fail("the graphics card gave the chart no memory to write to");
    std::memcpy(to, frame_.stream.data(), frame_.stream.size());
    stream_->endFullDynamicBufferUpdateForCurrentFrame();
    uploadedBytes_ += frame_.stream.size();
    return true;
}

bool RhiReplay::uploadUniforms(const RhiPlacement& placement) {
    if (!growDynamic(uniforms_, QRhiBuffer::UniformBuffer, frame_.uniforms.size() * uniformStride_)) return false;
    QMatrix4x4 place = rhi_->clipSpaceCorrMatrix();
    // The frame starts at the viewport's top left corner; its far edges may fall inside the last pixel.
    place.translate(placement.scaleX - 1, 1 - placement.scaleY);
    place.scale(placement.scaleX, placement.scaleY);
    char* to = uniforms_->beginFullDynamicBufferUpdateForCurrentFrame();
    if (!to) return fail("the graphics card gave the chart no memory to write to");
    const std::array<float, 4> device{static_cast<float>(frame_.pixelRatio), samples_ > 1 ? 0.0F : 1.0F, 0, 0};
    for (const auto& values : frame_.uniforms) {
        std::memcpy(to, place.constData(), placeFloats * sizeof(float));
        std::memcpy(to + placeFloats * sizeof(float), values.data(), sizeof values);
        std::memcpy(to + blockBytes - sizeof device, device.data(), sizeof device);
        to += uniformStride_;
    }
    uniforms_->endFullDynamicBufferUpdateForCurrentFrame();
    uploadedBytes_ += frame_.uniforms.size() * uniformStride_;
    return true;
}

RhiReplay::Kind RhiReplay::kindOf(const RecordedFrame::Draw& draw) {
    if (draw.opaque) return opaqueKind;
    if (draw.pipeline == Pipeline::flat) return draw.primitive == Primitive::lines ? flatLines : flatTriangles;
    return static_cast<Kind>(flatLines + static_cast<int>(draw.pipeline));
}

bool RhiReplay::clearsToGround() const {
    const auto& first = frame_.draws.front();
    if (!ground_ || !first.opaque || first.clip != 0) return false;
    ChartVertex corner;
    std::memcpy(&corner, frame_.stream.data() + first.byteOffset, sizeof corner);
    return corner.color == *ground_;
}

void RhiReplay::draw(QRhiCommandBuffer& commands, const RhiPlacement& placement) {
    if (!prepared_) return;
    const auto& view = placement.viewport;
    QRhiGraphicsPipeline* bound = nullptr;
    std::uint32_t clipped = 0;
    for (const auto& call : std::span(frame_.draws).subspan(clearsToGround() ? 1 : 0)) {
        const QRect clip = scissorOf(frame_.clips[call.clip], placement);
        if (clip.isEmpty()) continue;
        const Kind kind = kindOf(call);
        auto* pipeline = pipelines_[kind].get();
        const bool another = pipeline != bound;
        if (another) {
            commands.setGraphicsPipeline(pipeline);
            commands.setViewport(QRhiViewport(static_cast<float>(view.x()), static_cast<float>(view.y()),
                                              static_cast<float>(view.width()), static_cast<float>(view.height())));
            bound = pipeline;
        }
        if (another || call.clip != clipped) {
            commands.setScissor(QRhiScissor(clip.x(), clip.y(), clip.width(), clip.height()));
            clipped = call.clip;
        }
        const QRhiCommandBuffer::DynamicOffset offset(0, static_cast<quint32>(call.uniforms * uniformStride_));
        commands.setShaderResources(kind == textKind ? textBindings_.get() : plainBindings_.get(), 1, &offset);
        drawOne(commands, call);
    }
}

void RhiReplay::drawOne(QRhiCommandBuffer& commands, const RecordedFrame::Draw& draw) {
    QRhiBuffer* buffer = draw.source == RecordedFrame::fromStream
                             ? stream_.get()
                             : retainedBuffer(frame_.retained[static_cast<std::size_t>(draw.source)]->id);
    if (draw.primitive != Primitive::quads) {
        const QRhiCommandBuffer::VertexInput input(buffer, static_cast<quint32>(draw.byteOffset));
        commands.setVertexInput(0, 1, &input);
        commands.draw(static_cast<quint32>(draw.vertexCount));
        return;
    }
    const std::size_t quads = draw.vertexCount / 4;
    for (std::size_t done = 0; done < quads; done += quadsPerBatch) {
        const std::size_t offset = draw.byteOffset + done * 4 * vertexStride(draw.pipeline);
        const QRhiCommandBuffer::VertexInput input(buffer, static_cast<quint32>(offset));
        commands.setVertexInput(0, 1, &input, quadIndices_.get(), 0, QRhiCommandBuffer::IndexUInt16);
        commands.drawIndexed(static_cast<quint32>(std::min(quads - done, quadsPerBatch) * 6));
    }
}

}  // namespace vmr
