#include "ui/pane/PaneBinding.h"

#include <utility>

#include "model/AppModel.h"
#include "sim/SimEngine.h"

namespace vmr {

namespace {

QString text(const std::string& utf8) { return QString::fromStdString(utf8); }

}  // namespace

PaneBinding::PaneBinding(AppModel& model, PaneViewModel& view, MainLoop& main, const std::string& setupProblem,
                         const std::string& signInHint, SimEngine* sim)
    : model_(model),
      view_(view),
      main_(main),
      source_(model),
      setupProblem_(text(setupProblem)),
      signInHint_(text(signInHint)) {
    setActions();
    watch();
    if (sim)
        connections_.push_back(sim->changed.connect([this](SimEngine::Field) { view_.chart.tellAccountChanged(); }));
    view_.chart.setSource(&source_, [this](ChartPort* port) { source_.setPort(port); });
    marked_ = sessionConcern | toolbarConcern | toastConcern | chartConcern;
    flush();
}

PaneBinding::~PaneBinding() {
    view_.chart.setSource(nullptr);
    view_.session.setActions({});
    view_.toolbar.setActions({});
}

void PaneBinding::setActions() {
    view_.session.setActions({
        [this](const QString& email, const QString& password, bool remember) {
            model_.signIn(email.toStdString(), password.toStdString(), remember);
        },
        [this] { model_.signOut(); },
    });
    view_.toolbar.setActions({
        [this](const QString& symbol) { model_.switchSymbol(symbol.toStdString()); },
        [this](int minutes) { model_.setTimeframe(minutes); },
    });
}

template <class... Fields>
void PaneBinding::watch(Concern concern, Fields&... fields) {
    (connections_.push_back(fields.changed.connect([this, concern] { mark(concern); })), ...);
}

void PaneBinding::watch() {
    watch(sessionConcern, model_.isSignedIn, model_.signingIn, model_.authError, model_.userEmail, model_.connected,
          model_.connLimited, model_.status);
    watch(toolbarConcern, model_.chartChannel, model_.timeframe, model_.catFutures, model_.catStocks);
    watch(toastConcern, model_.toast, model_.marketClosedNotice);
    watch(chartConcern, model_.displayCandles);
}

void PaneBinding::mark(Concern concern) {
    const bool first = marked_ == 0;
    marked_ |= concern;
    if (!first) return;
    main_.post([this, alive = std::weak_ptr<int>(alive_)] {
        if (!alive.expired()) flush();
    });
}

void PaneBinding::flush() {
    ++flushes_;
    const unsigned concerns = std::exchange(marked_, 0);  // what the views do in turn belongs to the next flush
    if (concerns & toolbarConcern) view_.toolbar.set(toolbarState());
    if (concerns & toastConcern) view_.toast.set(toastState());
    if (concerns & chartConcern) view_.chart.setEmpty(model_.displayCandles->empty());
    if (concerns & sessionConcern) view_.session.set(sessionState());
}

SessionViewModel::State PaneBinding::sessionState() const {
    return {.entered = model_.isSignedIn,
            .signingIn = model_.signingIn,
            .authError = text(model_.authError.get().value_or("")),
            .setupProblem = setupProblem_,
            .signInHint = signInHint_,
            .userEmail = text(model_.userEmail),
            .connected = model_.connected,
            .connLimited = model_.connLimited,
            .status = text(model_.status)};
}

ToolbarViewModel::State PaneBinding::toolbarState() const {
    ToolbarViewModel::State out{.symbol = text(model_.currentSymbol()), .timeframe = model_.timeframe};
    for (const auto& future : model_.futuresList()) out.futures.push_back(text(future.first));
    for (const auto& stock : model_.stockList()) out.stocks.push_back(text(stock));
    return out;
}

ToastViewModel::State PaneBinding::toastState() const {
    if (const auto& toast = model_.toast.get()) return {text(toast->title), text(toast->detail.value_or(""))};
    if (model_.marketClosedNotice) return {QObject::tr("Market Closed"), QObject::tr("Trading resumes next session.")};
    return {};
}

}  // namespace vmr
