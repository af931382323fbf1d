// Where a window stands in its stages.
#pragma once

#include <QObject>
#include <QRect>
#include <QSize>
#include <array>
#include <optional>

#include "workspace/WindowPlacing.h"

class QQuickWindow;

namespace vmr {

class WindowPanes;

/// Places a window for its stage, and tells its panes where it stands. Main thread.
class WindowStage {
 public:
    /// `size` is one that the person asked for, empty for none. Window and panes outlive it.
    WindowStage(QQuickWindow& window, WindowPanes& panes, QSize size);
    ~WindowStage();
    WindowStage(const WindowStage&) = delete;
    WindowStage& operator=(const WindowStage&) = delete;

    /// Places the window for the form, or for charts.
    void apply(bool entered);
    /// Fills the whole screen, or stands again where it stood before. What is remembered is the latter.
    void toggleFullScreen();

 private:
    QMetaObject::Connection fitFrame(const QRect& area);
    std::array<double, 4> frame() const;
    std::array<double, 4> frameToKeep() const;
    std::optional<Screens> screensNow() const;

    QQuickWindow& window_;
    WindowPanes& panes_;
    std::optional<ScreenRect> wanted_;
    std::optional<std::array<double, 4>> before_;  ///< the frame, while it fills the screen
    QMetaObject::Connection fitting_;
};

}  // namespace vmr
