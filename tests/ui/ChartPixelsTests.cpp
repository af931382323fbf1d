// What the chart really puts on the screen.
#include <gtest/gtest.h>

#include <QPainter>
#include <QPixmap>
#include <QSGRendererInterface>
#include <QScreen>
#include <array>
#include <cstdlib>
#include <string>

#include "tests/chart/FullScene.h"
#include "ui/CpuChart.h"
#include "ui/FrameRaster.h"
#include "ui/UiWindow.h"

namespace vmr::test {
namespace {

constexpr int barCount = 40;

class ChartPixels : public testing::Test {
 protected:
    void SetUp() override {
        ui = std::make_unique<UiWindow>(windowSize, UiWindow::entered(), syntheticBars(barCount));
        ASSERT_NE(ui->window, nullptr);
        ASSERT_TRUE(ui->settle());
        chart = ui->chartItem();
        ASSERT_NE(chart, nullptr);
        ASSERT_EQ(chart->problem().toStdString(), "");
        const std::string api = std::getenv("VMR_TEST_API") ? std::getenv("VMR_TEST_API") : "";
        const auto expected = api == "vulkan" ? QSGRendererInterface::Vulkan : QSGRendererInterface::OpenGL;
        ASSERT_EQ(ui->window->rendererInterface()->graphicsApi(), expected);
        ASSERT_EQ(chart->sampleCount(), std::atoi(std::getenv("VMR_SAMPLES")));
    }

    double ratio() const { return ui->window->effectiveDevicePixelRatio(); }
    // The chart's part of the window, in device pixels.
    QImage chartPicture() {
        const QImage whole = windowPicture(*ui->window);
        const QPointF corner = chart->mapToScene(QPointF()) * ratio();
        const QSizeF size = chart->size() * ratio();
        const QRect part(static_cast<int>(std::lround(corner.x())), static_cast<int>(std::lround(corner.y())),
                         static_cast<int>(std::ceil(size.width())), static_cast<int>(std::ceil(size.height())));
        return whole.copy(part.intersected(whole.rect()));
    }
    Viewport viewport() { return chart->renderer().camera().viewport(); }
    /// Everything around the window's bars.
    SceneData scene() const {
        SceneData data(ui->bars(), {.strikes = 30, .minutes = 30, .bubbles = 2, .triangles = 2, .ratio = 10.0});
        data.config.initialCandles = ui->source.look.initialCandles;
        return data;
    }

    QSize windowSize{901, 601};
    std::unique_ptr<UiWindow> ui;
    ChartItem* chart = nullptr;
};

TEST_F(ChartPixels, EveryPixelIsWhatTheRecordedFrameSays) {
    ASSERT_EQ(ratio(), std::getenv("QT_SCALE_FACTOR") ? std::atof(std::getenv("QT_SCALE_FACTOR")) : 1.0);
    ui->item("entryPill")->setOpacity(0);  // an item over the chart, and no part of its frame
    const SceneData data = scene();
    CpuChart expected(&ui->account);
    ChartRenderer& renderer = expected.view.renderer();
    for (const bool everything : {false, true}) {
        SCOPED_TRACE(everything ? "everything" : "bars alone");
        if (everything) {
            ui->showScene(data);
            ASSERT_TRUE(ui->settle());
        }
        expected.view.setContent(ui->source.chartContent());
        const RecordedFrame frame = expected.frame(chart->size(), ratio());
        ASSERT_EQ(renderer.camera().viewport(), viewport());
        int kinds = 0;
        for (const auto& draw : frame.draws) kinds |= 1 << static_cast<int>(draw.pipeline);
        ASSERT_EQ(kinds, everything ? 0b11111001111 : 0b10000001101)
            << "no dense candles; without strikes no boxes, ribbons and markers";
        const double meanError = everything ? 0.4 : 0.25;
        expectSame(chartPicture(), frame, expected.atlas.image(), meanError);

        // in the middle of a fast pan labels, bars and candles are those of one frame
        for (const double bars : {-3.37, 5.81}) {
            SCOPED_TRACE(bars);
            for (ChartRenderer* one : {&renderer, &chart->renderer()}) {
                one->setInteracting(true);
                for (int i = 0; i < 3; ++i) one->pan(bars / 3);
                one->panByPrice(bars, chart->height());
            }
            const QImage picture = chartPicture();
            const RecordedFrame panned = expected.frame(chart->size(), ratio());
            ASSERT_EQ(renderer.camera().viewport(), viewport());
            expectSame(picture, panned, expected.atlas.image(), meanError);
        }
    }
}

/// Clears the view and draws some of a frame's shapes.
struct ShapesLayer final : ScreenLayer {
    RecordedFrame shapes;  // its first draw clears

    bool drawAbove(ScreenFrame& frame) override {
        frame.gpu.clear({0.04F, 0.04F, 0.04F, 1});  // as a chart does
        for (std::size_t i = 1; i < shapes.draws.size(); ++i) {
            const RecordedFrame::Draw& draw = shapes.draws[i];
            const auto upload = frame.arena.uploadDyn(bytesOf(shapes, draw));
            frame.gpu.setPipeline(draw.pipeline);
            const bool small = draw.pipeline == Pipeline::flat || draw.pipeline == Pipeline::text;
            frame.gpu.setUniforms(std::span(shapes.uniforms[draw.uniforms]).first(small ? 4 : 8));
            frame.gpu.draw(draw.primitive, upload->buffer, upload->offset, draw.vertexCount);
        }
        return false;
    }
};

/// With one sample a pixel.
class ChartEdges : public ChartPixels {
 protected:
    ChartEdges() { windowSize = {301, 221}; }
    void TearDown() override {
        ui.reset();  // it draws the layer
    }

    enum Kind { candles, pairedCandles, lines, levels, waves, markers, strikeBars, rectangles, other };

    /// What each draw of a frame of everything belongs to.
    static std::vector<Kind> kindsOf(const RecordedFrame& frame) {
        std::vector<Kind> out;
        int keptCandles = 0;    // the paired ones come first
        bool overlays = false;  // come after the price line
        for (const auto& draw : frame.draws) {
            const auto& u = frame.uniforms[draw.uniforms];
            const bool onScreen = u[2] < 0, onView = u[0] == 1 && u[2] == 1;
            Kind kind = other;
            if (onScreen)
                kind = draw.pipeline == Pipeline::text ? other : rectangles;
            else if (onView)
                kind = draw.pipeline == Pipeline::box ? strikeBars : waves;
            else if (draw.pipeline >= Pipeline::candle && draw.pipeline <= Pipeline::crowded)
                kind = (keptCandles += draw.source >= 0) < 2 ? pairedCandles : candles;
            else if (draw.pipeline == Pipeline::dashed && u[7] == 0.5F)
                kind = levels;
            else if (draw.pipeline == Pipeline::ribbon || draw.pipeline == Pipeline::dashed)
                kind = overlays ? lines : levels;
            else if (draw.pipeline == Pipeline::disc || draw.pipeline == Pipeline::triangle)
                kind = markers;
            overlays |= draw.primitive == Primitive::lines;
            out.push_back(draw.opaque ? other : kind);
        }
        return out;
    }

    /// Draws one kind of what `cpu` shows in the window.
    Deviation deviation(CpuChart& cpu, Kind kind) {
        layer.shapes = cpu.frame(chart->size(), ratio());
        const std::vector<Kind> kinds = kindsOf(layer.shapes);
        auto& draws = layer.shapes.draws;
        std::erase_if(draws, [&](const auto& draw) {
            const auto i = static_cast<std::size_t>(&draw - draws.data());
            return i > 0 && kinds[i] != kind;
        });
        EXPECT_GT(draws.size(), 1U);
        chart->renderer().redraw();
        return deviationFromCoverage(chartPicture(), layer.shapes, cpu.atlas.image());
    }

    ShapesLayer layer;
};

TEST_F(ChartEdges, CoverPixelsAsMuchAsTheirShapesDo) {
    SceneData data(syntheticBars(400), {.strikes = 20, .minutes = 400, .ribbons = 0, .ratio = 10.0});
    double fast = data.candles.front().close, slow = fast;
    for (std::size_t i = 0; i < data.candles.size(); ++i) {
        fast += (data.candles[i].close - fast) * 0.2;
        slow += (data.candles[i].close - slow) * 0.05;
        data.series.ema1.push_back({static_cast<double>(i), fast});
        data.series.ema2.push_back({static_cast<double>(i), slow - 80});
        data.series.vwapNY.push_back({static_cast<double>(i), slow + 80});
    }
    CpuChart cpu;
    ASSERT_TRUE(ui->settle());
    chart->renderer().addScreenLayer(layer);
    const char* const names[] = {"candles", "paired candles", "lines",       "levels",
                                 "waves",   "markers",        "strike bars", "rectangles"};
    data.srLines[0].price -= 30;  // shares no pixel with a wall
    for (const double pixelsABar : {1.3, 2.0, 3.7, 12.0}) {
        for (const auto& [theme, phase] : {std::pair("mono", 0.0), {"mono", 0.25}, {"mono", 0.64}, {"classic", 0.4}}) {
            data.config.candleTheme = theme;
            cpu.view.setContent(data.content());
            cpu.view.renderer().mirrorView(100 + phase / pixelsABar, chart->width() * ratio() / pixelsABar);
            for (const Kind kind : {candles, pairedCandles, lines, levels, waves, markers, strikeBars, rectangles}) {
                if (kind != candles && phase != 0.25) continue;
                // among the boxes are the tips of the pills, which are triangles
                const auto [most, mean] = kind == rectangles ? std::pair(0.06, 0.002) : std::pair(0.12, 0.015);
                const Deviation is = deviation(cpu, kind);
                EXPECT_GT(is.pixels, 200) << names[kind];
                EXPECT_TRUE(is.most < most && is.mean < mean)
                    << theme << " " << names[kind] << " at " << pixelsABar << " pixels a bar, " << phase
                    << " on: " << is.most << " at " << is.x << ", " << is.y << ", mean " << is.mean;
            }
        }
    }
}

/// Clears and clips as no layer of the chart does.
struct ClippedLayer final : ScreenLayer {
    bool drawAbove(ScreenFrame& frame) override {
        const auto upload = frame.arena.uploadDyn(std::array<ChartVertex, 3>{
            {{{-1, -1}, Rgba{1, 0, 0, 0.5F}}, {{1, -1}, Rgba{0, 1, 0, 0.5F}}, {{0, 1}, Rgba{0, 0, 1, 0.5F}}}});
        const auto triangle = [&] {
            frame.gpu.setPipeline(Pipeline::flat);
            frame.gpu.setUniforms(std::array{1.0F, 0.0F, 1.0F, 0.0F});
            frame.gpu.draw(Primitive::triangles, upload->buffer, upload->offset, upload->count);
        };
        frame.gpu.setClip({300.3, 99.7, 400, 150});
        frame.gpu.clear({0.2F, 0.3F, 0.1F, 1});
        triangle();
        frame.gpu.setClip({frame.width - 200, frame.height - 100, 900, 900});
        triangle();
        frame.gpu.setClip({100, 100, 0, 100});
        frame.gpu.clear({1, 1, 1, 1});
        frame.gpu.resetClip();
        triangle();
        return false;
    }
};

TEST_F(ChartPixels, ClearsAndClipsTouchTheirPixelsOnly) {
    ClippedLayer layer;  // both charts go before it
    {
        CpuChart expected;
        for (ChartRenderer* renderer : {&expected.view.renderer(), &chart->renderer()}) renderer->addScreenLayer(layer);
        expected.view.setContent(ui->source.chartContent());
        chart->renderer().redraw();
        const QImage picture = chartPicture();
        const RecordedFrame frame = expected.frame(chart->size(), ratio());
        expectSame(picture, frame, expected.atlas.image(), 0.4);
    }
    ui.reset();
}

TEST_F(ChartPixels, AStillChartAsksForNoFrames) {
    const auto drawn = chart->framesDrawn();
    const int swaps = ui->swaps;
    runFor(2000);
    EXPECT_EQ(chart->framesDrawn(), drawn);
    EXPECT_EQ(ui->swaps, swaps);

    // a repaint for another item's sake draws the recorded frame again, from what the GPU has
    const QImage before = chartPicture();
    const auto repaint = [&](int times) {
        for (int i = 0; i < times; ++i) {
            ui->window->update();
            ASSERT_TRUE(runUntil([&, seen = ui->swaps] { return ui->swaps > seen; }));
        }
    };
    repaint(3);  // each frame in flight has its copy by now
    const auto uploaded = chart->uploadedBytes();
    EXPECT_GT(uploaded, 10000U);
    repaint(5);
    EXPECT_EQ(chart->uploadedBytes(), uploaded);
    EXPECT_EQ(chart->framesDrawn(), drawn);
    EXPECT_EQ(chartPicture(), before);
}

TEST_F(ChartPixels, ItemsAboveCoverTheChartAndItemsBelowDoNotShow) {
    QQmlEngine engine;
    QQmlComponent component(&engine);
    component.setData("import QtQuick\nRectangle { x: 100; y: 100; width: 200; height: 200; color: \"#204060\" }",
                      QUrl());
    const std::unique_ptr<QQuickItem> cover(qobject_cast<QQuickItem*>(component.create()));
    ASSERT_NE(cover, nullptr) << component.errorString().toStdString();
    const QImage before = chartPicture();
    const QRect covered(100, 100, 200, 200);

    cover->setParentItem(chart->parentItem());
    cover->setPosition(chart->position() + QPointF(100, 100));
    cover->setZ(1);
    QImage expected = before;
    QPainter(&expected).fillRect(covered, QColor(0x20, 0x40, 0x60));
    EXPECT_EQ(chartPicture(), expected);
    cover->setZ(-1);
    const QColor own = ui->window->color();
    const struct {
        bool bare;  // nothing is said to lie below, and the window's colour is the ground
        QColor window;
        bool shows;
    } below[] = {{true, own, true}, {false, own, false}, {true, Qt::darkGreen, false}, {true, Qt::transparent, false}};
    for (const auto& [bare, window, shows] : below) {
        ui->window->setColor(window);
        chart->setProperty("onBareWindow", bare);
        chart->requestFrame();
        ASSERT_TRUE(ui->settle());
        EXPECT_EQ(chartPicture() != before, shows) << bare << window.name().toStdString();
    }
    cover->setParentItem(nullptr);
}

// Blending leaves alpha below one in the buffer; a window that has an alpha channel would let the desktop through.
TEST_F(ChartPixels, TheWindowIsOpaque) {
    const SceneData data = scene();
    ui->showScene(data);
    ASSERT_TRUE(ui->settle());
    EXPECT_LE(ui->window->format().alphaBufferSize(), 0);
    const QImage picture = windowPicture(*ui->window);
    EXPECT_FALSE(picture.hasAlphaChannel());
    runFor(200);
    const QImage shown =
        ui->window->screen()->grabWindow(ui->window->winId()).toImage().convertToFormat(picture.format());
    EXPECT_EQ(shown, picture) << "on the screen";
}

TEST_F(ChartPixels, SurvivesLosingItsGpuSideAndItsSize) {
    const QImage before = chartPicture();
    ui->window->setPersistentGraphics(false);
    ui->window->setPersistentSceneGraph(false);
    ui->window->hide();
    runFor(100);
    ui->window->releaseResources();
    const int hidden = ui->swaps;
    ui->window->show();
    ASSERT_TRUE(runUntil([&] { return ui->swaps > hidden; }));
    ASSERT_TRUE(ui->settle());
    EXPECT_EQ(chartPicture(), before);

    const QSize size = ui->window->size();
    for (const QSize other : {QSize(1200, 700), QSize(721, 481), size}) {
        ui->window->resize(other);
        ASSERT_TRUE(runUntil([&] { return ui->window->size() == other; }));
        ASSERT_TRUE(ui->settle());
        EXPECT_EQ(chartPicture().size(), QSize(other.width(), other.height() - 44));
    }

    // signed out and in again: another item, the same picture
    auto fields = ui->view.session.state();
    fields.entered = false;
    ui->view.session.set(fields);
    runFor(100);
    EXPECT_EQ(ui->chartItem(), nullptr);
    ui->window->setMinimumSize({1, 1});  // newer Qt grows a window to the form's least size
    ui->window->resize(size);
    fields.entered = true;
    ui->view.session.set(fields);
    ASSERT_TRUE(ui->settle());
    chart = ui->chartItem();
    ASSERT_NE(chart, nullptr);
    EXPECT_EQ(chartPicture(), before);

    // closed while it moves
    ui->bars().back().close += 20;
    ui->showBars();
    runFor(30);
    ui->window->close();
    ui.reset();
    runFor(50);
}

}  // namespace
}  // namespace vmr::test
