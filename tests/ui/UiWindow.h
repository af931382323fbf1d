// The program's window over made-up data, for tests.
#pragma once

#include <QCursor>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QScreen>
#include <QTest>
#include <functional>
#include <memory>
#include <vector>

#include "support/StillAccount.h"
#include "ui/SceneSource.h"
#include "ui/chart/ChartItem.h"
#include "ui/pane/PaneViewModel.h"
#include "ui/platform/UiSetup.h"
#include "ui/platform/WindowPicture.h"
#include "ui/shell/ServiceViewModel.h"
#include "ui/shell/WindowViewModel.h"

namespace vmr::test {

/// Runs the event loop until `done` holds; false when that takes longer than `limitMs`.
inline bool runUntil(const std::function<bool()>& done, int limitMs = 10000) {
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > limitMs) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 5);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);  // no `exec` is there to do it
    }
    return true;
}

inline void runFor(int ms) {
    runUntil([] { return false; }, ms);
}

/// Bars of one trading day from 09:30 in New York, the same for the same count.
inline std::vector<Candle> syntheticBars(int count) {
    std::vector<Candle> out;
    std::uint32_t state = 12345;
    const auto random = [&state] { return ((state = state * 1664525U + 1013904223U) >> 8) / 16777216.0; };
    const auto quarter = [](double price) { return std::round(price * 4) / 4; };
    double close = 21480.25;
    for (int i = 0; i < count; ++i) {
        const double open = std::exchange(close, quarter(close + (random() - 0.49) * 14 + 4 * std::sin(i / 7.0)));
        const double high = quarter(std::max(open, close) + random() * 6);
        const double low = quarter(std::min(open, close) - random() * 6);
        out.push_back({1781098200 + 60LL * i, open, high, low, close, std::floor(100 + random() * 900)});
    }
    return out;
}

/// Waits until a first frame has come and then none for a while; `swaps` counts them.
inline bool comesToRest(const int& swaps) {
    constexpr int longestInterval = 400;  // milliseconds, of calm frames that are drawn slowly
    int last = -1;
    return runUntil([&] {
        const bool rests = std::exchange(last, swaps) == swaps && swaps > 0;
        if (!rests) runFor(longestInterval);
        return rests;
    });
}

class UiWindow {
 public:
    explicit UiWindow(QSize size, const SessionViewModel::State& session, std::vector<Candle> bars = {})
        : account(bars.empty() ? 0 : bars.back().close), source(std::move(bars)) {
        view.session.set(session);
        PaneViewModel::Surroundings at;
        at.trading = &account;
        view.setSurroundings(std::move(at));
        source.feed(view);
        engine_ = std::make_unique<QQmlApplicationEngine>();
        registerQml(*engine_);
        engine_->setInitialProperties({{QStringLiteral("view"), QVariant::fromValue(&shown)},
                                       {QStringLiteral("service"), QVariant::fromValue(&service)}});
        engine_->load(QUrl(QStringLiteral("qrc:/Velmora/Main.qml")));
        if (engine_->rootObjects().isEmpty()) return;
        window = qobject_cast<QQuickWindow*>(engine_->rootObjects().first());
        window->setMinimumSize(QSize(1, 1));
        window->resize(size);
        QObject::connect(window, &QQuickWindow::frameSwapped, window, [this] { ++swaps; });
        QCursor::setPos(window->screen()->geometry().bottomRight());  // no crosshair in the pictures
        window->show();
        window->requestActivate();
        runUntil([this] { return swaps > 0; });
    }

    static SessionViewModel::State entered() { return {.entered = true, .connected = true}; }

    ChartItem* chartItem() const { return window->findChild<ChartItem*>(); }
    QQuickItem* item(const char* name) const { return window->findChild<QQuickItem*>(QLatin1String(name)); }

    std::vector<Candle>& bars() { return source.bars; }
    void showBars() { source.changed(); }
    /// Everything beside the bars; `data` must outlive what is shown.
    void showScene(const SceneData& data) {
        source.scene = &data;
        showBars();
    }
    /// Right-clicks into the window.
    void openMenu(QPoint at) { QTest::mouseClick(window, Qt::RightButton, {}, at); }
    bool menuShown() const {
        return window->findChild<QObject*>(QStringLiteral("orderMenu"))->property("opened").toBool();
    }
    bool settle() { return comesToRest(swaps); }

    StillAccount account;  ///< its lines are shown with a scene
    SceneSource source;
    PaneViewModel view;
    WindowViewModel shown{view};
    ServiceViewModel service;  // with nothing to say
    QQuickWindow* window = nullptr;
    int swaps = 0;

 private:
    std::unique_ptr<QQmlApplicationEngine> engine_;
};

}  // namespace vmr::test
