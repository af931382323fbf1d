// A pointer and keys of the display's own, for a program that runs within the test.
#pragma once

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QMouseEvent>
#include <QProcess>
#include <QQuickWindow>
#include <QTest>
#include <algorithm>
#include <string>

namespace vmr::test {

/// Each call comes back when the window has had its events.
class RealHands : public QObject {
 public:
    explicit RealHands(QQuickWindow& window) : window_(window) {
        tool_.start("xdotool", {"-"});
        EXPECT_TRUE(tool_.waitForStarted());
        qApp->installEventFilter(this);
        send("windowfocus --sync " + id(), 0);
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    ~RealHands() override {
        tool_.closeWriteChannel();
        tool_.waitForFinished();
    }

    void move(QPointF to) {
        send(moving(to), 0);
        EXPECT_TRUE(QTest::qWaitFor([&] { return at_ == to.toPoint(); }, 10000));
    }
    void press() { send("mousedown 1", 1); }
    void release() { send("mouseup 1", 1); }
    void click(QPointF at) { send(moving(at) + " click 1", 2); }
    void wheel(QPointF at, bool up) { send(moving(at) + (up ? " click 4" : " click 5"), 1); }
    /// In the words of xdotool, "shift+Tab".
    void key(const std::string& chord) { send("key --delay 1 " + chord, 1 + std::ranges::count(chord, '+')); }
    /// Digits and what stands between them.
    void type(const std::string& text) { send("type --delay 1 " + text, std::ssize(text)); }

    /// What they have done so far.
    std::ptrdiff_t events() const { return done_; }

 private:
    std::string id() const { return std::to_string(window_.winId()); }
    std::string moving(QPointF at) const {
        const QPoint to = at.toPoint();
        return "mousemove --window " + id() + " " + std::to_string(to.x()) + " " + std::to_string(to.y());
    }
    void send(const std::string& words, std::ptrdiff_t events) {
        done_ += events;
        seen_ = 0;
        tool_.write((words + "\n").c_str());
        EXPECT_TRUE(QTest::qWaitFor([&] { return seen_ >= events; }, 10000)) << words;
    }
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched != &window_ || !event->spontaneous()) return false;
        const auto type = event->type();
        if (type == QEvent::MouseMove) at_ = static_cast<QMouseEvent*>(event)->position().toPoint();
        seen_ += type == QEvent::MouseButtonPress || type == QEvent::MouseButtonRelease || type == QEvent::KeyRelease ||
                 type == QEvent::Wheel;
        return false;
    }

    QQuickWindow& window_;
    QProcess tool_;
    QPoint at_{-1, -1};
    std::ptrdiff_t done_ = 0, seen_ = 0;
};

}  // namespace vmr::test
