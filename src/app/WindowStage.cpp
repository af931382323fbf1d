#include "app/WindowStage.h"

#include <QGuiApplication>
#include <QQuickWindow>
#include <QScreen>

#include "workspace/ShellWindows.h"

namespace vmr {

namespace {
constexpr double cascade = 32;  // points from a window to the next of the same size

ScreenRect rectOf(const QRect& rect) {
    return {double(rect.x()), double(rect.y()), double(rect.width()), double(rect.height())};
}
}  // namespace

WindowStage::WindowStage(QQuickWindow& window, WindowPanes& panes, QSize size) : window_(window), panes_(panes) {
    if (!size.isEmpty()) wanted_ = rectOf(QRect(QPoint(), size));
    panes_.frame = [this] { return std::optional(frame()); };
    if (wanted_) panes_.frameToKeep = [this] { return std::optional(frameToKeep()); };
}

WindowStage::~WindowStage() {
    QObject::disconnect(fitting_);
    panes_.frame = panes_.frameToKeep = {};
}

void WindowStage::apply(bool entered) {
    const auto screens = screensNow();
    if (!screens) return;
    ScreenRect place = signInPlace(*screens);
    if (entered) {
        place = enteredPlace(*screens, panes_.takeFrame(), wanted_);
        if (wanted_) {
            const double step = cascade * ((panes_.number() - 1) % 4);
            place.x += step;
            place.y += step;
        }
    }
    const QRect area(qRound(place.x), qRound(place.y), qRound(place.width), qRound(place.height));
    QObject::disconnect(fitting_);
    const bool fills = entered && place == screens->own;
    window_.setGeometry(fills ? area - window_.frameMargins() : area);
    if (fills && window_.frameMargins().isNull()) fitting_ = fitFrame(area);
}

// A window that is to fill an area fills it with its frame, which is known some pictures after the first, if it has
// one.
QMetaObject::Connection WindowStage::fitFrame(const QRect& area) {
    return QObject::connect(
        &window_, &QQuickWindow::frameSwapped, &window_,
        [this, area, pictures = 0]() mutable {
            constexpr int mostPictures = 30;
            const QMargins frame = window_.frameMargins();
            if (frame.isNull() && ++pictures < mostPictures) return;
            QObject::disconnect(fitting_);
            if (!frame.isNull()) window_.setGeometry(area - frame);
        },
        Qt::QueuedConnection);
}

void WindowStage::toggleFullScreen() {
    if (window_.visibility() == QWindow::FullScreen) {
        window_.showNormal();
        before_.reset();
        return;
    }
    before_ = frame();
    window_.showFullScreen();
}

std::array<double, 4> WindowStage::frame() const {
    if (before_ && window_.visibility() == QWindow::FullScreen) return *before_;
    const auto screens = screensNow();
    return screens ? storedFrame(rectOf(window_.geometry()), screens->first) : std::array<double, 4>();
}

// A size that was asked for holds for one run: it does not take the remembered frame's place.
std::array<double, 4> WindowStage::frameToKeep() const {
    if (panes_.record() && panes_.record()->frame.size() == 4) {
        const auto& kept = panes_.record()->frame;
        return {kept[0], kept[1], kept[2], kept[3]};
    }
    const auto screens = screensNow();
    return screens ? storedFrame(screens->own, screens->first) : std::array<double, 4>();
}

std::optional<Screens> WindowStage::screensNow() const {
    const QScreen* first = QGuiApplication::primaryScreen();
    const QScreen* own = window_.screen() ? window_.screen() : first;
    if (!first || !own) return std::nullopt;
    Screens screens{rectOf(first->geometry()), rectOf(own->availableGeometry()), {}};
    for (const QScreen* screen : QGuiApplication::screens())
        screens.free.push_back(rectOf(screen->availableGeometry()));
    return screens;
}

}  // namespace vmr
