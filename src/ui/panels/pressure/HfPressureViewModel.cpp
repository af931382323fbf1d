#include "ui/panels/pressure/HfPressureViewModel.h"

#include <algorithm>
#include <utility>

#include "perf/Perf.h"

namespace vmr {

namespace {
QString text(const AxisScale::Label& label) {
    return QString::fromUtf8(label.text().data(), static_cast<int>(label.text().size()));
}

std::vector<PressureLadder::Row> rowsOf(const HfPressure::Samples& samples) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const HfPressure::Ladder ladder = HfPressure::ladder(samples);
    std::vector<PressureLadder::Row> out;
    for (std::size_t i = 0; i < ladder.band.size(); ++i) {
        const StrikeFlow* const flow = samples.back()->atmAt(ladder.band[i]);
        out.push_back({ladder.band[i], flow ? flow->call : nan, flow ? flow->put : nan, i == ladder.atm});
    }
    return out;
}
// The views show texts, so that a value with the same one is no news to them.
bool sameFlow(double a, double b) { return a == b || HfPressure::fmt(a).text() == HfPressure::fmt(b).text(); }
bool sameShare(double a, double b) {
    return a == b || HfPressure::shareText(a).text() == HfPressure::shareText(b).text();
}
}  // namespace

// Rows go and come one by one, so that the items of the others stay and glide to their new places.
void PressureLadder::set(const std::vector<Row>& rows) {
    const auto before = rows_.size();
    for (auto i = static_cast<int>(rows_.size()) - 1; i >= 0; --i) {
        const double strike = rows_[static_cast<std::size_t>(i)].strike;
        if (std::any_of(rows.begin(), rows.end(), [strike](const Row& row) { return row.strike == strike; })) continue;
        beginRemoveRows({}, i, i);
        rows_.erase(rows_.begin() + i);
        endRemoveRows();
    }
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const int at = static_cast<int>(i);
        if (i >= rows_.size() || rows_[i].strike != rows[i].strike) {
            beginInsertRows({}, at, at);
            rows_.insert(rows_.begin() + at, rows[i]);
            endInsertRows();
        } else {
            const Row told = std::exchange(rows_[i], rows[i]);
            QList<int> news;
            if (!sameFlow(told.call, rows[i].call)) news << callRole;
            if (!sameFlow(told.put, rows[i].put)) news << putRole;
            if (told.atm != rows[i].atm) news << atmRole;
            if (!news.isEmpty()) emit dataChanged(index(at), index(at), news);
        }
    }
    if (rows_.size() > rows.size()) {  // the band told them in another order, which no band does
        beginRemoveRows({}, static_cast<int>(rows.size()), count() - 1);
        rows_.resize(rows.size());
        endRemoveRows();
    }
    if (before != rows_.size()) emit countChanged();
}

QVariant PressureLadder::data(const QModelIndex& index, int role) const {
    if (index.row() < 0 || index.row() >= count()) return {};
    const Row& row = rows_[static_cast<std::size_t>(index.row())];
    switch (role) {
        case strikeRole:
            return row.strike;
        case labelRole:
            return text(HfPressure::strikeText(row.strike));
        case callRole:
            return row.call;
        case putRole:
            return row.put;
        case atmRole:
            return row.atm;
        default:
            return {};
    }
}

QHash<int, QByteArray> PressureLadder::roleNames() const {
    return {{strikeRole, "strike"}, {labelRole, "label"}, {callRole, "call"}, {putRole, "put"}, {atmRole, "atm"}};
}

void HfPressureViewModel::setSource(Read read, Perf* perf) {
    readSamples_ = std::move(read);
    perf_ = perf;
    current_ = false;
}

const HfPressure::Samples& HfPressureViewModel::samples() {
    if (std::exchange(current_, true)) return samples_;
    samples_.clear();
    if (state_.open && readSamples_) readSamples_(samples_);
    return samples_;
}

void HfPressureViewModel::set(const State& state) {
    const State before = std::exchange(state_, state);
    if (before.open != state.open) current_ = false;
    if (before.windowMin != state.windowMin) emit windowMinChanged();
    if (before.stale != state.stale) emit staleChanged();
    const bool same = before.windowMin == state.windowMin && before.count == state.count && before.last == state.last;
    if (state.open && (!same || !before.open)) refresh();
    if (before.open != state.open) emit openChanged();
}

void HfPressureViewModel::refresh() {
    current_ = false;  // the window has moved on, too
    const HfPressure::Samples& seen = samples();
    if (perf_) perf_->bump("HFP.body");
    const bool flat = seen.size() > 1 && !HfPressure::scale(seen).drawn;
    const QString notice = seen.size() < 2 ? tr("Waiting for HF flow")
                           : flat          ? tr("No HF flow in this window")
                                           : QString();
    if (std::exchange(notice_, notice) != notice) emit noticeChanged();
    readOut(seen);
    ladder_.set(rowsOf(seen));
    ++revision_;
    emit samplesChanged();
}

void HfPressureViewModel::readOut(const HfPressure::Samples& seen) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const HfPressure::Readouts now = HfPressure::readouts(seen);
    const std::array<double, 4> values{now.callShare, now.putShare, now.call, now.put};
    bool news = false;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double value = now.known ? values[i] : nan;
        if (i < 2 ? sameShare(read_[i], value) : sameFlow(read_[i], value)) continue;
        read_[i] = value;
        news = true;
    }
    if (news) emit readoutsChanged();
}

QString HfPressureViewModel::flowText(qreal value) const { return text(HfPressure::fmt(value)); }

QString HfPressureViewModel::shareText(qreal percent) const { return text(HfPressure::shareText(percent)); }

QVariantMap HfPressureViewModel::spotAt(qreal x, qreal width) {
    constexpr double withSeconds = 1;
    const HfPressure::Samples& seen = samples();
    const HfPressure::Scale scale = HfPressure::scale(seen);
    const HfpSample* const at = HfPressure::nearest(seen, scale, x, width);
    if (!at) return {};
    return {{QStringLiteral("x"), HfPressure::mainX(scale, at->t, width)},
            {QStringLiteral("time"), text(HfPressure::timeText(at->t, withSeconds))},
            {QStringLiteral("call"), flowText(at->call)},
            {QStringLiteral("put"), flowText(at->put)}};
}

}  // namespace vmr
