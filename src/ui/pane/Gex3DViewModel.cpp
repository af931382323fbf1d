#include "ui/pane/Gex3DViewModel.h"

#include <QEvent>
#include <QRectF>
#include <QSurfaceFormat>
#include <QtMath>
#include <algorithm>
#include <cmath>
#include <optional>

#include "base/ReducedMotion.h"
#include "model/AppModel.h"
#include "workspace/ActionTable.h"

namespace vmr {

namespace {
constexpr const char* colorSafeKey = "vmr.gex3d.colorSafe";
constexpr double easing = 0.25;                 // seconds
constexpr int quickStep = 16, frugalStep = 67;  // milliseconds: 15 frames a second where the processor draws
constexpr float leastHeight = 0.01F;

QVector3D vector(const ScenePoint& p) {
    return {static_cast<float>(p[0]), static_cast<float>(p[1]), static_cast<float>(p[2])};
}
QString text(const std::string& utf8) { return QString::fromStdString(utf8); }
}  // namespace

Gex3DViewModel::Gex3DViewModel(QObject* parent)
    : QObject(parent),
      manySamples_(QSurfaceFormat::defaultFormat().samples() > 1),
      reduced_(wantsReducedMotion(environment)) {
    steps_.setTimerType(Qt::PreciseTimer);
    steps_.setInterval(manySamples_ ? quickStep : frugalStep);
    connect(&steps_, &QTimer::timeout, this, &Gex3DViewModel::step);
}

void Gex3DViewModel::show(AppModel* pane) {
    pane_ = pane;
    revision_ = 0;  // another pane's may be the same
    readColorSafe();
    refresh();
}

// Another pane's view may have changed it.
void Gex3DViewModel::readColorSafe() {
    const bool now = pane_ && pane_->preferences().get(colorSafeKey) == "1";
    if (std::exchange(colorSafe_, now) != now) emit colorSafeChanged();
}

Gex3DView* Gex3DViewModel::shown() const { return pane_ && pane_->surface.view ? &*pane_->surface.view : nullptr; }

void Gex3DViewModel::refresh() {
    const bool open = shown() != nullptr;
    QString source = pane_ ? text(pane_->config->gexSource).remove(QStringLiteral("derived:")) : QString();
    bool differs = std::exchange(source_, std::move(source)) != source_;
    const std::uint64_t revision = open ? shown()->revision() : 0;
    if (std::exchange(revision_, revision) != revision) {
        makeLists();
        makeBars(open_);
        differs = true;
    }
    if (differs) emit sceneChanged();
    looked();
    if (std::exchange(open_, open) != open) {
        if (open) readColorSafe();
        emit cameraChanged();
        emit autoRotateChanged();
        emit openChanged();
    }
    runSteps();
}

QUrl Gex3DViewModel::view() const {
    return open_ && gex3DViewBuilt() ? QUrl(QStringLiteral("qrc:/Velmora/Surface3D/Gex3DModal.qml")) : QUrl();
}

bool Gex3DViewModel::loading() const { return shown() && shown()->loading(); }

QVariantList Gex3DViewModel::labelsShown() const {
    QVariantList out;
    for (const bool one : placed_.shown) out.push_back(one);
    return out;
}

void Gex3DViewModel::makeLists() {
    labels_.clear();
    expirations_.clear();
    const Gex3DView* view = shown();
    if (!view) return;
    for (const SceneLabel& label : view->scene().labels)
        labels_.push_back(QVariantMap{{QStringLiteral("text"), text(label.text)},
                                      {QStringLiteral("place"), vector(label.place)},
                                      {QStringLiteral("white"), label.white},
                                      {QStringLiteral("outside"), label.outside}});
    for (std::size_t e = 0; e < view->expirations().size(); ++e) {
        const std::string& date = view->expirations()[e];
        expirations_.push_back(QVariantMap{{QStringLiteral("date"), text(date)},
                                           {QStringLiteral("label"), text(view->expLabels()[e])},
                                           {QStringLiteral("hidden"), view->hidden().contains(date)}});
    }
}

QVector3D Gex3DViewModel::markerPlace() const {
    return shown() ? vector(shown()->scene().spotMarker.place) : QVector3D();
}

QVector3D Gex3DViewModel::cameraPosition() const { return shown() ? vector(shown()->camera.position()) : QVector3D(); }

QQuaternion Gex3DViewModel::cameraRotation() const {
    if (!shown()) return {};
    return QQuaternion::fromEulerAngles(static_cast<float>(-shown()->camera.pitch()),
                                        static_cast<float>(shown()->camera.yaw()), 0);
}

qreal Gex3DViewModel::fieldOfView() const {
    return shown() ? OrbitCamera::fieldOfView(shown()->area[2], shown()->area[3]) : OrbitCamera::verticalField;
}

qreal Gex3DViewModel::angle() const { return shown() ? qRadiansToDegrees(shown()->angle()) : 0; }

QQuaternion Gex3DViewModel::labelRotation() const {
    return QQuaternion::fromAxisAndAngle(0, 1, 0, static_cast<float>(-angle())) * cameraRotation();
}

qreal Gex3DViewModel::labelSide() const {
    return shown() ? std::cos(qDegreesToRadians(shown()->camera.yaw()) - shown()->angle()) : 1;
}

bool Gex3DViewModel::autoRotate() const { return shown() && shown()->autoRotate; }

void Gex3DViewModel::setAutoRotate(bool on) {
    if (!shown() || std::exchange(shown()->autoRotate, on) == on) return;
    emit autoRotateChanged();
    runSteps();
}

void Gex3DViewModel::setColorSafe(bool on) {
    if (std::exchange(colorSafe_, on) == on) return;
    if (pane_) pane_->preferences().set(colorSafeKey, on ? "1" : "0");
    emit colorSafeChanged();
}

// Gestures ------------------------------------------------------------------------------------------------------------

void Gex3DViewModel::close() {
    if (pane_) pane_->setGex3DActive(false);
}

void Gex3DViewModel::orbit(qreal dx, qreal dy) {
    if (!shown()) return;
    shown()->camera.orbit(dx, dy);
    lookAgain();
}

void Gex3DViewModel::pan(qreal dx, qreal dy) {
    if (!shown()) return;
    shown()->camera.pan(dx, dy);
    lookAgain();
}

void Gex3DViewModel::dolly(qreal units) {
    if (!shown()) return;
    shown()->camera.dolly(units);
    lookAgain();
}

void Gex3DViewModel::home() {
    if (!shown()) return;
    shown()->home();
    emit cameraChanged();
    looked();
}

void Gex3DViewModel::hover(qreal x, qreal y) {
    if (!shown()) return;
    shown()->setPointer(std::array{x, y});
    looked();
}

void Gex3DViewModel::leave() {
    if (!shown()) return;
    shown()->setPointer(std::nullopt);
    looked();
}

void Gex3DViewModel::press(qreal x, qreal y) {
    hover(x, y);
    if (shown() && shown()->barOver()) pane_->surface.markedStrike = shown()->scene().bars[*shown()->barOver()].strike;
}

void Gex3DViewModel::setHidden(const QString& date, bool hidden) {
    if (!shown()) return;
    shown()->setHidden(date.toStdString(), hidden);
    refresh();
}

void Gex3DViewModel::tellPlaces(const QRectF& area, const QVariantMap& controls) {
    if (!shown()) return;
    const std::array<double, 4> now{area.x(), area.y(), area.width(), area.height()};
    const bool resized = std::exchange(shown()->area, now) != now;
    shown()->controls.clear();
    for (auto at = controls.begin(); at != controls.end(); ++at) {
        const QPointF place = at->toPointF();
        shown()->controls[at.key().toStdString()] = {place.x(), place.y()};
    }
    if (resized) lookAgain();
}

void Gex3DViewModel::lookAgain() {
    shown()->look();
    emit cameraChanged();
    looked();
}

// Which labels have room and what is under the pointer, after something has changed.
void Gex3DViewModel::looked() {
    if (Gex3DLabels now = shown() ? shown()->labels() : Gex3DLabels(); now != placed_) {
        placed_ = std::move(now);
        emit labelsPlaced();
    }
    const auto tooltip = shown() ? shown()->tooltip() : std::nullopt;
    if (const QString now = text(tooltip.value_or("")); now != tooltip_) {
        tooltip_ = now;
        emit tooltipChanged();
    }
    const auto over = shown() ? shown()->barOver() : std::nullopt;
    bool relit = false;
    for (std::size_t i = 0; i < bars_.size(); ++i) relit |= std::exchange(bars_[i].lit, over == i) != (over == i);
    if (relit) emit barsChanged();
}

// Bars ----------------------------------------------------------------------------------------------------------------

// A bar that was there before goes on from the height that it has.
void Gex3DViewModel::makeBars(bool eased) {
    const std::vector<Bar> before = std::exchange(bars_, {});
    const auto placesBefore = std::exchange(places_, {});
    heights_.clear();
    if (const Gex3DView* view = shown()) {
        for (const Gex3DBar& bar : view->scene().bars) {
            const auto key = std::pair(view->expirations()[bar.expiration], bar.strike);
            const auto old = placesBefore.find(key);
            const double from = old == placesBefore.end() ? 0.0 : double(before[old->second].size.y());
            places_[key] = bars_.size();
            heights_.emplace_back(from, bar.box.size[1]);
            bars_.push_back({vector(bar.box.place), vector(bar.box.size), bar.positive});
        }
    }
    const bool moves = eased && !reduced_ && std::any_of(heights_.begin(), heights_.end(), [](const auto& one) {
                           return static_cast<float>(one.first) != static_cast<float>(one.second);
                       });
    easedSince_ = moves ? pane_->clock().monotonic() : -1;
    if (moves) setHeights();
    emit barsChanged();
}

void Gex3DViewModel::setHeights() {
    const double share = std::clamp((pane_->clock().monotonic() - easedSince_) / easing, 0.0, 1.0);
    const double eased = share * share * (3 - 2 * share);
    for (std::size_t i = 0; i < bars_.size(); ++i) {
        const auto& [from, to] = heights_[i];
        const auto height = std::max(static_cast<float>(from + (to - from) * eased), leastHeight);
        bars_[i].size.setY(height);
        bars_[i].place.setY(height / 2);
    }
    if (share >= 1) easedSince_ = -1;
}

void Gex3DViewModel::enterWindow(QWindow* window) {
    if (window_) window_->removeEventFilter(this);
    window_ = window;
    if (window_) window_->installEventFilter(this);
    runSteps();
}

bool Gex3DViewModel::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Expose || event->type() == QEvent::Hide) runSteps();
    return QObject::eventFilter(watched, event);
}

void Gex3DViewModel::runSteps() {
    const bool seen = window_ && window_->isExposed();
    const bool wanted = open_ && seen && (easedSince_ >= 0 || autoRotate());
    if (wanted == steps_.isActive()) return;
    if (!wanted) return steps_.stop();
    steppedAt_ = pane_->clock().monotonic();
    steps_.start();
}

void Gex3DViewModel::step() {
    if (!shown()) return steps_.stop();
    const double now = pane_->clock().monotonic();
    const double passed = now - std::exchange(steppedAt_, now);
    if (easedSince_ >= 0) {
        setHeights();
        emit barsChanged();
    }
    if (autoRotate()) {
        shown()->advance(passed);
        emit cameraChanged();
        looked();
    }
    runSteps();
}

}  // namespace vmr
