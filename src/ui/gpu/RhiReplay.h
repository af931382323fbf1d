// Draws recorded frames with QRhi.
#pragma once

#include <QImage>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "gpu/FrameRecorder.h"
#include "gpu/RecordedFrame.h"
#include "gpu/Vertices.h"
#include "ui/gpu/RhiAccess.h"

namespace vmr {

/// Where a frame lands in the render target, in device pixels from the target's bottom left, and what it may touch.
struct RhiPlacement {
    QRect viewport;
    QRect scissor;                 ///< within the viewport; empty: nothing is drawn
    float scaleX = 1, scaleY = 1;  ///< the frame's share of the viewport, which covers whole pixels
};

/// What changed in the glyph atlas.
struct AtlasChange {
    QSize size;     ///< of the whole atlas
    QPoint at;      ///< where `pixels` go
    QImage pixels;  ///< 8 bits a pixel
};

/// The GPU side of one chart. Owned by the render node and used on its thread only. Keeps the last frame, so that a
/// repaint that the chart did not ask for draws it again, from what the GPU already holds.
class RhiReplay {
 public:
    ~RhiReplay() { release(); }

    /// Takes the recorder's newest frame and gives it the memory of the one before; false when there is none. While the
    /// main thread is blocked.
    bool takeFrame(FrameRecorder& recorder);
    /// The colour that already lies under the whole frame, if one does: a frame that begins by clearing to it leaves
    /// that out, which costs a software rasteriser a pass over every pixel.
    void setGround(std::optional<Rgba8> color) { ground_ = color; }
    /// Queues a change of the atlas for the next `prepare`.
    void changeAtlas(AtlasChange change) { atlasChanges_.push_back(std::move(change)); }

    /// Uploads what is new, before the pass begins. False when the frame cannot be drawn; `problem` then says why.
    bool prepare(const RhiTarget& target, const RhiPlacement& placement);
    /// Draws the frame inside the pass.
    void draw(QRhiCommandBuffer& commands, const RhiPlacement& placement);

    /// Gives back every GPU object. The frame stays, but retained buffers and the atlas must be given anew: a later
    /// `prepare` uploads buffers by itself, the atlas counts as empty.
    void release();

    /// Bytes given to the GPU so far, of any kind.
    std::uint64_t uploadedBytes() const { return uploadedBytes_; }

    /// Why nothing can be drawn; empty while all is well.
    const std::string& problem() const { return problem_; }

 private:
    /// Flat shapes of any sort, and then the pipelines in their order.
    enum Kind {
        opaqueKind,
        flatTriangles,
        flatLines,
        boxKind,
        roundedKind,
        candleKind,
        denseKind,
        crowdedKind,
        ribbonKind,
        dashedKind,
        discKind,
        triangleKind,
        textKind,
        kinds
    };
    struct RetainedCopy {
        std::weak_ptr<const RetainedBytes> bytes;
        GpuBuffer id = 0;
        std::unique_ptr<QRhiBuffer> buffer;
    };
    static Kind kindOf(const RecordedFrame::Draw& draw);

    bool ready(const RhiTarget& target);
    bool makeShared();
    bool makePipelines(QRhiRenderTarget& target);
    std::unique_ptr<QRhiGraphicsPipeline> makePipeline(Kind kind, int samples);
    bool uploadRetained(QRhiResourceUpdateBatch& batch);
    bool uploadAtlas(QRhiResourceUpdateBatch& batch);
    bool uploadFrame(const RhiPlacement& placement);
    bool uploadStream();
    bool uploadUniforms(const RhiPlacement& placement);
    bool growDynamic(std::unique_ptr<QRhiBuffer>& buffer, int usage, std::size_t size);
    void drawOne(QRhiCommandBuffer& commands, const RecordedFrame::Draw& draw);
    bool clearsToGround() const;
    QRhiBuffer* retainedBuffer(GpuBuffer id) const;
    bool fail(const char* what);

    RecordedFrame frame_;
    std::vector<AtlasChange> atlasChanges_;
    std::optional<Rgba8> ground_;
    std::string problem_;
    bool prepared_ = false;

    QRhi* rhi_ = nullptr;
    std::vector<RetainedCopy> retained_;
    std::unique_ptr<QRhiBuffer> stream_, uniforms_, quadIndices_;
    std::vector<bool> slotsUploaded_;  // by frame slot: its copy of stream and uniforms is the frame's
    float scaleX_ = 0, scaleY_ = 0;    // that the uniforms were made for
    std::uint64_t uploadedBytes_ = 0;
    bool quadIndicesUploaded_ = false;
    std::size_t uniformStride_ = 0;
    std::unique_ptr<QRhiTexture> atlas_;
    std::unique_ptr<QRhiSampler> sampler_;
    std::unique_ptr<QRhiShaderResourceBindings> plainBindings_, textBindings_;
    std::unique_ptr<QRhiRenderPassDescriptor> pass_;
    int samples_ = 0;
    std::array<std::unique_ptr<QRhiGraphicsPipeline>, kinds> pipelines_;
};

}  // namespace vmr
