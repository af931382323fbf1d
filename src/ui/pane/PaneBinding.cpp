#include "ui/pane/PaneBinding.h"

#include <utility>

#include "model/AppModel.h"
#include "sim/SimEngine.h"

namespace vmr {

namespace {

QString text(const std::string& utf8) { return QString::fromStdString(utf8); }

constexpr const char* lastEmailKey = "vmr.lastEmail";

}  // namespace

PaneBinding::PaneBinding(AppModel& model, PaneViewModel& view, MainLoop& main, const std::string& setupProblem,
                         const std::string& signInHint, SimEngine* sim)
    : model_(model),
      view_(view),
      editor_(model),
      main_(main),
      setupProblem_(text(setupProblem)),
      signInHint_(text(signInHint)) {
    setActions();
    watch();
    if (sim)
        connections_.push_back(sim->changed.connect([this](SimEngine::Field field) {
            if (field != SimEngine::Field::keeping) view_.chart.tellAccountChanged();
        }));
    view_.chart.setSource(&model_, [this](ChartPort* port) { model_.setChartPort(port); });
    marked_ = everyConcern;
    flush();
}

PaneBinding::~PaneBinding() {
    model_.setChartPort(nullptr);
    view_.chart.setSource(nullptr);
    view_.session.setActions({});
    view_.toolbar.setActions({});
    view_.account.setSendReset({});
    view_.panels.setFollower({});
    view_.settings.edit(nullptr);
    view_.panelFrames.keepIn(nullptr);
}

void PaneBinding::setSessionActions() {
    view_.session.setActions({
        [this](const QString& email, const QString& password, bool remember) {
            model_.preferences().set(lastEmailKey, email.toStdString());
            model_.signIn(email.toStdString(), password.toStdString(), remember);
        },
        [this] { model_.signOut(); },
        [this] { model_.session.cancelSignIn(); },
        [this] { return text(model_.preferences().get(lastEmailKey).value_or("")); },
    });
    view_.account.setSendReset([this](auto done) { model_.session.sendPasswordReset(std::move(done)); });
}

void PaneBinding::bindPanels() {
    view_.panels.setFollower([this](const PanelsViewModel::State& state) {
        model_.panels.accountPanelOpen = state.accountPanelOpen;
        model_.panels.configPanelOpen = state.configPanelOpen;
    });
    view_.settings.edit(&editor_);
    // before the panel shows itself
    QObject::connect(&view_.panels, &PanelsViewModel::changed, &view_.settings,
                     [view = &view_] { view->settings.setOpen(view->panels.configPanelOpen()); });
    view_.panelFrames.keepIn(&model_.preferences(), [this](const QString& id, const std::optional<QRectF>& frame) {
        auto& frames = model_.panels.frames;
        if (frame)
            frames[id.toStdString()] = {frame->x(), frame->y(), frame->width(), frame->height()};
        else
            frames.erase(id.toStdString());
    });
}

void PaneBinding::setActions() {
    setSessionActions();
    bindPanels();
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
    watch(sessionConcern, model_.session.isSignedIn, model_.session.signingIn, model_.session.authError,
          model_.session.userEmail, model_.session.connected, model_.session.connLimited, model_.session.status);
    watch(toolbarConcern, model_.channels, model_.bars.timeframe, model_.catalog.catFutures, model_.catalog.catStocks);
    watch(toastConcern, model_.notices.toast, model_.notices.marketClosedNotice);
    watch(chartConcern, model_.bars.displayCandles, model_.notices.accountProblem);
    watch(panelsConcern, model_.panels.accountPanelOpen, model_.panels.configPanelOpen);
    watch(settingsConcern, model_.config, model_.channels);
}

void PaneBinding::mark(Concern concern) {
    const bool first = marked_ == 0;
    marked_ |= concern;
    if (!first) return;
    main_.post(whileThere_([this] { flush(); }));
}

void PaneBinding::flush() {
    ++flushes_;
    const unsigned concerns = std::exchange(marked_, 0);  // what the views do in turn belongs to the next flush
    if (concerns & toolbarConcern) view_.toolbar.set(toolbarState());
    if (concerns & toastConcern) view_.toast.set(toastState());
    if (concerns & chartConcern) {
        view_.chart.setEmpty(model_.bars.displayCandles->empty());
        view_.chart.setAccountProblem(text(model_.notices.accountProblem->value_or("")));
    }
    if (concerns & panelsConcern)
        view_.panels.set(
            {.accountPanelOpen = model_.panels.accountPanelOpen, .configPanelOpen = model_.panels.configPanelOpen});
    if (concerns & settingsConcern) view_.settings.refresh();
    if (concerns & sessionConcern) {
        if (!model_.session.isSignedIn) {  // the form has none
            view_.panels.setAccountPanelOpen(false);
            view_.panels.setConfigPanelOpen(false);
        }
        view_.session.set(sessionState());
    }
}

SessionViewModel::State PaneBinding::sessionState() const {
    return {.entered = model_.session.isSignedIn,
            .signingIn = model_.session.signingIn,
            .authError = text(model_.session.authError.get().value_or("")),
            .setupProblem = setupProblem_,
            .signInHint = signInHint_,
            .userEmail = text(model_.session.userEmail),
            .connected = model_.session.connected,
            .connLimited = model_.session.connLimited,
            .status = text(model_.session.status)};
}

ToolbarViewModel::State PaneBinding::toolbarState() const {
    ToolbarViewModel::State out{.symbol = text(model_.currentSymbol()), .timeframe = model_.bars.timeframe};
    for (const auto& future : model_.catalog.futuresList()) out.futures.push_back(text(future.first));
    for (const auto& stock : model_.catalog.stockList()) out.stocks.push_back(text(stock));
    return out;
}

ToastViewModel::State PaneBinding::toastState() const {
    if (const auto& toast = model_.notices.toast.get()) return {text(toast->title), text(toast->detail.value_or(""))};
    if (model_.notices.marketClosedNotice)
        return {QObject::tr("Market Closed"), QObject::tr("Trading resumes next session.")};
    return {};
}

}  // namespace vmr
