#include "ui/pane/PaneBinding.h"

#include "model/AppModel.h"
#include "sim/SimEngine.h"

namespace vmr {

namespace {

QString text(const std::string& utf8) { return QString::fromStdString(utf8); }

}  // namespace

PaneBinding::PaneBinding(AppModel& model, PaneViewModel& view, const std::string& setupProblem,
                         const std::string& signInHint, SimEngine* sim)
    : model_(model), view_(view), setupProblem_(text(setupProblem)), signInHint_(text(signInHint)) {
    view_.setActions({
        [this](const QString& email, const QString& password, bool remember) {
            model_.signIn(email.toStdString(), password.toStdString(), remember);
        },
        [this] { model_.signOut(); },
        [this](const QString& symbol) { model_.switchSymbol(symbol.toStdString()); },
        [this](int minutes) { model_.setTimeframe(minutes); },
        [this] { model_.marketClosedOrder(); },
        [this] { model_.interactionEnded(); },
        [this](const std::optional<Viewport>& viewport) { viewport_ = viewport; },
    });
    watch();
    if (sim) connections_.push_back(sim->changed.connect([this](SimEngine::Field) { view_.tellAccountChanged(); }));
    copyFields();
    model_.setChartPort(this);
}

PaneBinding::~PaneBinding() {
    model_.setChartPort(nullptr);
    view_.setActions({});
    view_.setChart({});
}

void PaneBinding::watch() {
    const auto fields = [this] { copyFields(); };
    connections_.push_back(model_.session.isSignedIn.changed.connect(fields));
    connections_.push_back(model_.session.signingIn.changed.connect(fields));
    connections_.push_back(model_.session.authError.changed.connect(fields));
    connections_.push_back(model_.session.userEmail.changed.connect(fields));
    connections_.push_back(model_.session.connected.changed.connect(fields));
    connections_.push_back(model_.session.connLimited.changed.connect(fields));
    connections_.push_back(model_.session.status.changed.connect(fields));
    connections_.push_back(model_.channels.changed.connect(fields));
    connections_.push_back(model_.bars.timeframe.changed.connect(fields));
    connections_.push_back(model_.catalog.catFutures.changed.connect(fields));
    connections_.push_back(model_.catalog.catStocks.changed.connect(fields));
    connections_.push_back(model_.notices.toast.changed.connect(fields));
    connections_.push_back(model_.notices.marketClosedNotice.changed.connect(fields));
}

void PaneBinding::copyFields() {
    PaneViewModel::Fields out;
    out.entered = model_.session.isSignedIn;
    out.signingIn = model_.session.signingIn;
    out.authError = text(model_.session.authError.get().value_or(""));
    out.setupProblem = setupProblem_;
    out.signInHint = signInHint_;
    out.userEmail = text(model_.session.userEmail);
    out.connected = model_.session.connected;
    out.connLimited = model_.session.connLimited;
    out.status = text(model_.session.status);
    out.symbol = text(model_.currentSymbol());
    out.timeframe = model_.bars.timeframe;
    if (const auto& toast = model_.notices.toast.get()) {
        out.notice = text(toast->title);
        out.noticeDetail = text(toast->detail.value_or(""));
    } else if (model_.notices.marketClosedNotice) {
        out.notice = QObject::tr("Market Closed");
        out.noticeDetail = QObject::tr("Trading resumes next session.");
    }
    for (const auto& future : model_.catalog.futuresList()) out.futures.push_back(text(future.first));
    for (const auto& stock : model_.catalog.stockList()) out.stocks.push_back(text(stock));
    view_.setFields(std::move(out));
}

void PaneBinding::contentChanged() {
    const ChartContent content = model_.chartContent();
    ChartContent::Revisions of = content.revisions;
    of.candles = of.levels = of.strikes = of.secStrikes = of.markers = 0;
    if (!overlays_ || overlaysOf_ != of || chart_ != content.chart) {
        overlays_ = &ribbons_.make({.series = content.overlays,
                                    .lines = content.srLines,
                                    .linesRevision = content.revisions.srLines,
                                    .style = content.overlayStyle,
                                    .candles = content.candles,
                                    .timeframe = content.timeframe});
        ++overlayRevision_;
    }
    overlaysOf_ = of;
    chart_ = content.chart;
    view_.setChart({.candles = &model_.bars.displayCandles.get(),
                    .config = *content.look,
                    .sessionHHMM = content.sessionHHMM,
                    .overlays = overlays_,
                    .overlayRevision = overlayRevision_,
                    .levels = &model_.options.levels.get(),
                    .strikes = &model_.options.strikes.get(),
                    .etfRatio = content.etfRatio,
                    .flipStrike = content.flipStrike,
                    .secStrikes = &model_.options.secStrikes.get(),
                    .secRatio = content.secRatio,
                    .bubbles = &model_.markers.bubblePts.get(),
                    .triangles = &model_.markers.trianglePts.get(),
                    .simRoot = std::string(content.simRoot)});
}

}  // namespace vmr
