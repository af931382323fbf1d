#include "chart/Camera.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/Fatal.h"
#include "gpu/PlotArea.h"

namespace vmr {

double Camera::maxBarW(double viewW) { return std::max((viewW * 0.25 - 90.0) * 0.8, 40.0); }

double Camera::padFrac() const {
    return (maxBarW(lastViewW) + PlotArea::priceAxisWidth + 370.0) / std::max(lastViewW, 1.0);
}

double Camera::rightEdgeFirst(std::size_t n) const {
    const double gap = std::min(visibleCount * 0.5, std::max(12.0, visibleCount * padFrac()));
    return std::max(static_cast<double>(n) - visibleCount + gap, 0.0);
}

void Camera::startOver() { lastFirst_ = lastCount_ = lastMin_ = lastMax_ = nan_; }

void Camera::showFirstData(std::size_t n, double initialCandles) {
    const auto count = static_cast<double>(n);
    const double keep = 1.0 - std::min(padFrac(), 0.5);
    if (initialCandles > 10.0) {
        visibleCount = std::min(keep <= 0.5 ? initialCandles * 2.0 : initialCandles / keep, count);
    } else if (keep > 0.5) {
        visibleCount = std::min(10.0 / keep, count);
    } else {
        visibleCount = std::min(20.0, count);
    }
    firstVisible = rightEdgeFirst(n);
    followLive = true;
    autoY = true;
    touched = false;
}

void Camera::followData(std::size_t n, double shift, bool lastChanged) {
    visibleCount = std::min(visibleCount > 0 ? visibleCount : 120.0, static_cast<double>(n));
    const double right = rightEdgeFirst(n);
    if (lastChanged && followLive) {
        firstVisible = right;
    } else {
        if (!followLive) firstVisible += shift;
        firstVisible = std::min(std::max(firstVisible, 0.0), right);
    }
}

void Camera::resize(double viewW, std::size_t n) {
    if (std::exchange(lastViewW, viewW) == viewW || n == 0) return;
    const double right = rightEdgeFirst(n);
    firstVisible = followLive ? right : std::min(firstVisible, right);
}

void Camera::place(double first, std::size_t n, double ridesWithin) {
    const double right = rightEdgeFirst(n);
    firstVisible = std::min(std::max(first, 0.0), right);
    followLive = std::abs(firstVisible - right) < ridesWithin;
    touched = true;
}

bool Camera::pan(double byCandles, std::size_t n) {
    if (!std::isfinite(byCandles)) return false;
    place(firstVisible + byCandles, n);
    return true;
}

bool Camera::zoom(double factor, std::size_t n) {
    if (!std::isfinite(factor)) return false;
    const double right = firstVisible + visibleCount;
    visibleCount = std::min(std::max(visibleCount * factor, 10.0), static_cast<double>(n));
    place(right - visibleCount, n);
    return true;
}

bool Camera::zoomPrice(double factor) {
    if (std::isfinite(priceLineFrac) || !std::isfinite(factor)) return false;
    const double mid = (yMinManual + yMaxManual) / 2.0;
    const double half = (yMaxManual - yMinManual) / 2.0 * factor;
    // A range that collapsed or overflowed could never be zoomed back.
    if (!std::isfinite(half) || !(mid - half < mid + half)) return false;
    autoY = false;
    touched = true;
    yMinManual = mid - half;
    yMaxManual = mid + half;
    return true;
}

bool Camera::panByPrice(double dyPixels, double viewHeight) {
    if (!std::isfinite(dyPixels) || !std::isfinite(viewHeight)) return false;
    if (std::isfinite(priceLineFrac)) {
        setPriceLineFrac(std::clamp(priceLineFrac - dyPixels / viewHeight, 0.05, 0.95));
        return true;
    }
    const double shift = dyPixels / viewHeight * (yMaxManual - yMinManual);
    if (!(yMinManual + shift < yMaxManual + shift)) return false;
    autoY = false;
    touched = true;
    yMinManual += shift;
    yMaxManual += shift;
    return true;
}

bool Camera::mirrorCount(double count, std::size_t n) {
    if (!std::isfinite(count) || count < 1.0) return false;
    visibleCount = std::min(std::max(count, 10.0), n < 11 ? 10.0 : static_cast<double>(n));
    return true;
}

bool Camera::mirrorView(double first, double count, std::size_t n) {
    const bool counted = mirrorCount(count, n);
    if (std::isfinite(first)) place(first, n, mirroredRides_);
    return counted || std::isfinite(first);
}

bool Camera::mirrorViewRel(double gapRight, double count, std::size_t n) {
    const bool counted = mirrorCount(count, n);
    if (std::isfinite(gapRight)) place(static_cast<double>(n) - gapRight - visibleCount, n, mirroredRides_);
    return counted || std::isfinite(gapRight);
}

bool Camera::mirrorPrice(double minP, double maxP) {
    if (!std::isfinite(minP) || !std::isfinite(maxP) || !(minP < maxP)) return false;
    autoY = false;
    touched = true;
    yMinManual = minP;
    yMaxManual = maxP;
    return true;
}

void Camera::setPriceLineFrac(double frac) {
    priceLineFrac = frac;
    if (std::isfinite(frac)) autoY = true;
}

void Camera::apply(const ViewSetup& setup, std::size_t n) {
    if (std::isfinite(setup.bars) && setup.bars >= ViewSetup::leastBars) {
        visibleCount = std::min(setup.bars, std::max(ViewSetup::leastBars, static_cast<double>(n)));
        firstVisible = rightEdgeFirst(n);
        followLive = true;
        touched = true;
    }
    // a pinned last close leaves the range to the chart, and no hand could make a kept one automatic again
    autoY = setup.autoY || std::isfinite(priceLineFrac) || !mirrorPrice(setup.low, setup.high);
}

bool Camera::settle(std::span<const Candle> candles) {
    if (!std::isfinite(firstVisible) || !std::isfinite(visibleCount)) fatal("chart camera position is not finite");
    const double start = std::max(std::floor(firstVisible), 0.0);
    const double end = std::min(static_cast<double>(candles.size()), std::ceil(firstVisible + visibleCount));
    if (end <= start) return false;

    double lo = candles[static_cast<std::size_t>(start)].low;
    double hi = candles[static_cast<std::size_t>(start)].high;
    for (auto i = static_cast<std::size_t>(start); i < static_cast<std::size_t>(end); ++i) {
        lo = std::min(lo, candles[i].low);
        hi = std::max(hi, candles[i].high);
    }
    if (hi <= lo) hi = lo + 1.0;
    if (autoY) settleRange(lo, hi, candles.back().close);

    snapLerps =
        !(firstVisible == lastFirst_ && visibleCount == lastCount_ && yMinManual == lastMin_ && yMaxManual == lastMax_);
    lastFirst_ = firstVisible;
    lastCount_ = visibleCount;
    lastMin_ = yMinManual;
    lastMax_ = yMaxManual;
    return true;
}

void Camera::settleRange(double lo, double hi, double lastClose) {
    double& yMin = yMinManual;
    double& yMax = yMaxManual;
    if (std::isfinite(priceLineFrac) && std::isfinite(lastClose)) {
        const double f = std::clamp(priceLineFrac, 0.05, 0.95);
        const double need = std::max((lastClose - lo) / f, (hi - lastClose) / (1.0 - f)) * 1.02;
        const double present = yMax - yMin;
        const bool stays = present > 0 && need >= 0.45 * present && need <= 1.05 * present;
        const double span = stays ? present : need;
        yMin = lastClose - f * span;
        yMax = lastClose + (1.0 - f) * span;
        return;
    }
    const bool stays = yMin < yMax && lo >= yMin && hi <= yMax && !((hi - lo) * 2.2 < (yMax - yMin));
    if (stays) return;
    const double pad = (hi - lo) * 1.02;
    yMin = lo - pad;
    yMax = hi + pad;
}

Uniforms Camera::uniforms(const DataOrigin& origin) const {
    return {static_cast<float>(xScale()), static_cast<float>(-1.0 - (firstVisible - origin.bar) * xScale()),
            static_cast<float>(yScale()), static_cast<float>(-0.9 - (yMinManual - origin.price) * yScale())};
}

}  // namespace vmr
