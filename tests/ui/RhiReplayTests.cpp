// Drawing recorded frames into a target of its own: what goes to the GPU when, and that every repaint shows the frame.
#include "ui/gpu/RhiReplay.h"

#include <gtest/gtest.h>

#include <QOffscreenSurface>
#include <QVulkanInstance>
#include <array>
#include <cstdlib>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "gpu/FrameArena.h"
#include "gpu/FrameRecorder.h"
#include "ui/gpu/RhiAccess.h"
#if QT_VERSION < QT_VERSION_CHECK(6, 6, 0)
#include <private/qrhigles2_p.h>
#include <private/qrhivulkan_p.h>
#endif

namespace vmr::test {
namespace {

constexpr std::array<float, 4> onView{1, 0, 1, 0};

/// A QRhi on the interface that the run is for, with one texture to draw on.
class OffscreenTarget {
 public:
    explicit OffscreenTarget(QSize size) {
        const std::string api = std::getenv("VMR_TEST_API") ? std::getenv("VMR_TEST_API") : "";
        if (api == "vulkan") {
            vulkan_.create();
            QRhiVulkanInitParams params;
            params.inst = &vulkan_;
            rhi.reset(QRhi::create(QRhi::Vulkan, &params));
        } else {
            surface_.reset(QRhiGles2InitParams::newFallbackSurface());
            QRhiGles2InitParams params;
            params.fallbackSurface = surface_.get();
            rhi.reset(QRhi::create(QRhi::OpenGLES2, &params));
        }
        resize(size);
    }
    void resize(QSize size) {
        texture_.reset(rhi->newTexture(QRhiTexture::RGBA8, size, 1,
                                       QRhiTexture::RenderTarget | QRhiTexture::UsedAsTransferSource));
        texture_->create();
        target_.reset(rhi->newTextureRenderTarget({QRhiColorAttachment(texture_.get())}));
        pass_.reset(target_->newCompatibleRenderPassDescriptor());
        target_->setRenderPassDescriptor(pass_.get());
        target_->create();
    }
    /// One repaint of the whole target over white.
    QImage paint(RhiReplay& replay) {
        QRhiCommandBuffer* commands = nullptr;
        rhi->beginOffscreenFrame(&commands);
        const QRect whole(QPoint(), texture_->pixelSize());
        const RhiPlacement placement{whole, whole, 1, 1};
        EXPECT_TRUE(replay.prepare({rhi.get(), commands, target_.get()}, placement)) << replay.problem();
        commands->beginPass(target_.get(), Qt::white, {1.0F, 0});
        replay.draw(*commands, placement);
        QRhiReadbackResult read;
        auto* after = rhi->nextResourceUpdateBatch();
        after->readBackTexture({texture_.get()}, &read);
        commands->endPass(after);
        rhi->endOffscreenFrame();
        const QImage image(reinterpret_cast<const uchar*>(read.data.constData()), read.pixelSize.width(),
                           read.pixelSize.height(), QImage::Format_RGBA8888);
        return rhi->isYUpInFramebuffer() ? image.mirrored() : image.copy();
    }

    QVulkanInstance vulkan_;
    std::unique_ptr<QOffscreenSurface> surface_;
    std::unique_ptr<QRhi> rhi;

 private:
    std::unique_ptr<QRhiTexture> texture_;
    std::unique_ptr<QRhiTextureRenderTarget> target_;
    std::unique_ptr<QRhiRenderPassDescriptor> pass_;
};

struct Recorded {
    FrameRecorder gpu;
    FrameArena arena{gpu};
    GpuBuffer kept = 0;

    Recorded() {
        const std::array<ChartVertex, 300> list{};
        kept = gpu.makeBuffer(std::as_bytes(std::span(list)));
    }
    /// The view in `ground`, and over it `count` half-transparent red triangles over the left half's lower part.
    void record(QSize size, const Rgba& ground, std::size_t count = 1) {
        const double width = size.width(), height = size.height();
        arena.beginFrame();
        gpu.beginFrame(width, height, 1);
        gpu.clear(ground);
        gpu.setClip({0, height / 2, width / 2, height});
        gpu.setPipeline(Pipeline::flat);
        gpu.setUniforms(onView);
        gpu.draw(Primitive::triangles, kept, 0, 300);
        std::vector<ChartVertex> list;
        for (std::size_t i = 0; i < count; ++i)
            for (const auto& [x, y] : {std::pair{-1.0F, -1.0F}, {3.0F, -1.0F}, {-1.0F, 3.0F}})
                list.push_back({{x, y, 0, 1}, {1, 0, 0, i == 0 ? 0.5F : 0.0F}});
        const auto upload = arena.uploadDyn(list);
        gpu.draw(Primitive::triangles, upload->buffer, upload->offset, upload->count);
        gpu.endFrame();
    }
};

void expectPicture(const QImage& image, const Rgba& ground) {
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const bool covered = x < image.width() / 2 && y >= image.height() / 2;
            const QRgb pixel = image.pixel(x, y);
            const std::array is{qRed(pixel), qGreen(pixel), qBlue(pixel)};
            for (std::size_t i = 0; i < 3; ++i) {
                const double below = ground[i] * 255.0;
                ASSERT_NEAR(is[i], covered ? (below + (i == 0 ? 255.0 : 0.0)) / 2 : below, 1.5) << x << ", " << y;
            }
        }
    }
}

TEST(RhiReplay, OnlyANewFrameGoesToTheGpuAndEachSlotGetsIt) {
    constexpr Rgba blue{0, 0.2F, 0.8F, 1}, green{0.2F, 0.6F, 0, 1};
    const QSize size(40, 30);
    OffscreenTarget target(size);
    ASSERT_NE(target.rhi, nullptr);
    const int frameSlots = target.rhi->resourceLimit(QRhi::FramesInFlight);
    Recorded recorded;
    RhiReplay replay;
    std::uint64_t before = 0;
    const auto uploads = [&] { return replay.uploadedBytes() - std::exchange(before, replay.uploadedBytes()); };
    // repaints until every slot has had its turn, then more of them that need nothing
    const auto repaint = [&](const Rgba& ground) {
        int uploading = 0;
        for (int i = 0; i < frameSlots + 6; ++i) {
            expectPicture(target.paint(replay), ground);
            const bool uploaded = uploads() > 0;
            uploading += uploaded;
            EXPECT_TRUE(!uploaded || i < frameSlots + 1) << i;
        }
        EXPECT_LE(uploading, frameSlots);
        return uploading;
    };
    for (const Rgba& ground : {blue, green, blue}) {
        recorded.record(size, ground);
        ASSERT_TRUE(replay.takeFrame(recorded.gpu));
        EXPECT_FALSE(replay.takeFrame(recorded.gpu));
        EXPECT_GE(repaint(ground), 1);
    }
    // a longer frame: the buffers grow, and no slot keeps the old one's
    recorded.record(size, green, 3000);
    ASSERT_TRUE(replay.takeFrame(recorded.gpu));
    EXPECT_GE(repaint(green), 1);
    // a frame that comes between two repaints
    recorded.record(size, blue);
    ASSERT_TRUE(replay.takeFrame(recorded.gpu));
    expectPicture(target.paint(replay), blue);
    recorded.record(size, green);
    ASSERT_TRUE(replay.takeFrame(recorded.gpu));
    expectPicture(target.paint(replay), green);
    expectPicture(target.paint(replay), green);
    uploads();
    // lost and given anew
    replay.release();
    EXPECT_GE(repaint(green), 1);
}

}  // namespace
}  // namespace vmr::test
