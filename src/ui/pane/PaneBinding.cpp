#include "ui/pane/PaneBinding.h"

#include <utility>

#include "model/AppModel.h"
#include "model/ClockTexts.h"
#include "model/Expirations.h"
#include "perf/Perf.h"
#include "sim/SimEngine.h"
#include "store/SettingTable.h"
#include "workspace/ActionTable.h"

namespace vmr {

namespace {

QString text(const std::string& utf8) { return QString::fromStdString(utf8); }

constexpr const char* lastEmailKey = "vmr.lastEmail";
constexpr double daysCountedEvery = 10;  // seconds; those to an expiration, which a quiet market tells nobody of

}  // namespace

PaneBinding::PaneBinding(AppModel& model, PaneViewModel& view, MainLoop& main, const std::string& setupProblem,
                         const std::string& signInHint, SimEngine* sim)
    : model_(model),
      view_(view),
      editor_(model),
      main_(main),
      setupProblem_(text(setupProblem)),
      signInHint_(text(signInHint)),
      second_(model.clock(), main),
      steered_(model.clock().onSteered(main, [this](const ClockSteering&) { mark(clockConcern); })) {
    setActions();
    watch();
    if (sim)
        connections_.push_back(sim->changed.connect([this](SimEngine::Field field) {
            if (field != SimEngine::Field::keeping) view_.chart.tellAccountChanged();
        }));
    view_.chart.setSource(&model_, [this](ChartPort* port) { model_.setChartPort(port); });
    marked_ = everyConcern;
    flush();
    daysTimer_ = main_.every(daysCountedEvery, daysCountedEvery, [this] { mark(toolbarConcern); });
}

PaneBinding::~PaneBinding() {
    main_.cancel(daysTimer_);
    main_.cancel(pressureTimer_);
    model_.setChartPort(nullptr);
    view_.chart.setSource(nullptr);
    view_.session.setActions({});
    view_.toolbar.setActions({});
    view_.account.setSendReset({});
    view_.panels.setFollower({});
    view_.templates.setActions({});
    view_.settings.edit(nullptr);
    view_.pressure.setActions({});
    view_.pressure.setSource({});
    view_.surface.show(nullptr);
    view_.sim.bind(nullptr);
    view_.simList.bind(nullptr);
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
        model_.panels.templatesPanelOpen = state.templatesPanelOpen;
        model_.panels.configPanelOpen = state.configPanelOpen;
        model_.panels.simPanelOpen = state.simPanelOpen;
    });
    view_.templates.setActions({
        [this](const QString& key) { model_.templates.load(key.toStdString()); },
        [this](const QString& key) { model_.templates.save(key.toStdString()); },
        [this] { model_.templates.refresh(); },
    });
    view_.settings.edit(&editor_);
    view_.surface.show(&model_);
    view_.sim.bind(model_.desk.get(), &model_.clock(), &main_);
    view_.simList.bind(model_.desk.get(), &main_);
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

void PaneBinding::bindPressure() {
    Perf* const perf = view_.surroundings().perf;
    view_.pressure.setSource(
        [this, perf](HfPressure::Samples& out) {
            const double start = model_.clock().monotonic();
            HfPressure::visible(model_.hfp.samples, model_.clock().now(), model_.hfp.windowMin, out);
            if (perf) perf->time("HFP.visible", (model_.clock().monotonic() - start) * 1000);
        },
        perf);
    view_.pressure.setSwitches(view_.surroundings().pressure);
    view_.pressure.setActions({.setWindow = [this](int minutes) { model_.setPressureWindow(minutes); },
                               .close =
                                   [this] {
                                       GexConfig changed = model_.config;
                                       changed.hfPressure = false;
                                       model_.setConfig(changed);
                                   },
                               .tellShown =
                                   [this](bool shown, bool overlay, const QStringList& times, const QString& pointed) {
                                       auto& told = model_.panels.pressure;
                                       told.reset();
                                       if (!shown) return;
                                       told = PressureShown{overlay, {}, pointed.toStdString()};
                                       for (const QString& time : times) told->times.push_back(time.toStdString());
                                   }});
    // at once: a frame may be recorded before the next flush
    connections_.push_back(model_.hfp.changed.connect([this] { view_.pressure.samplesMoved(); }));
}

// Samples that come faster, on a market that runs fast, wait for the next second.
bool PaneBinding::pressureWaits(const HfPressureViewModel::State& now) {
    constexpr double least = 0.9;  // real seconds; samples of every second come a little early or late
    const HfPressureViewModel::State& shown = view_.pressure.state();
    if (now.count == shown.count && now.last == shown.last) return false;
    const double wait = pressureShown_ + least - model_.clock().monotonic();
    const bool samplesAlone =
        shown.open == now.open && shown.windowMin == now.windowMin && shown.count > 0 && now.count > 0;
    if (!samplesAlone || wait <= 0) {
        pressureShown_ = model_.clock().monotonic();
        return false;
    }
    if (pressureTimer_ == SerialQueue::noTimer)
        pressureTimer_ = main_.after(wait, [this] {
            pressureTimer_ = SerialQueue::noTimer;
            showPressure();
        });
    return true;
}

void PaneBinding::showPressure() {
    const auto& samples = model_.hfp.samples;
    HfPressureViewModel::State now{.open = model_.config->hfPressure && view_.surroundings().pressure.view,
                                   .windowMin = model_.hfp.windowMin,
                                   .stale = !model_.session.connected && !samples.empty(),
                                   .count = samples.size(),
                                   .last = samples.empty() ? 0 : samples.back().t};
    if (pressureWaits(now)) {
        now.count = view_.pressure.state().count;
        now.last = view_.pressure.state().last;
    }
    view_.pressure.set(now);
}

void PaneBinding::setActions() {
    setSessionActions();
    bindPanels();
    bindPressure();
    view_.toolbar.setActions({
        [this](int minutes) { model_.setTimeframe(minutes); },
        [this](const QString& iso) { model_.setExpiration(iso.toStdString()); },
        [this](const QVariantMap& shown, const QStringList& folded) {
            auto& told = model_.panels.toolbar;
            told = {};
            for (auto at = shown.begin(); at != shown.end(); ++at) told.shown[at.key().toStdString()] = at->toDouble();
            for (const QString& one : folded) told.folded.push_back(one.toStdString());
        },
    });
}

template <class... Fields>
void PaneBinding::watch(Concern concern, Fields&... fields) {
    (connections_.push_back(fields.changed.connect([this, concern] { mark(concern); })), ...);
}

void PaneBinding::watch() {
    watch(sessionConcern, model_.session.isSignedIn, model_.session.signingIn, model_.session.authError,
          model_.session.userEmail, model_.session.connected, model_.session.connLimited, model_.session.status);
    watch(toolbarConcern, model_.channels, model_.bars.timeframe, model_.options.futureExps, model_.options.selectedExp,
          model_.config, model_.surface.active, model_.panels.configPanelOpen, model_.panels.templatesPanelOpen,
          model_.panels.accountPanelOpen, model_.panels.simPanelOpen);
    watch(toastConcern, model_.notices.toast, model_.notices.marketClosedNotice);
    watch(clockConcern, model_.session.isSignedIn, model_.config, model_.channels, model_.bars.timeframe);
    watch(chartConcern, model_.bars.displayCandles, model_.notices.accountProblem);
    watch(panelsConcern, model_.panels.accountPanelOpen, model_.panels.configPanelOpen,
          model_.panels.templatesPanelOpen, model_.panels.simPanelOpen);
    watch(templatesConcern, model_.templates.list, model_.templates.busy, model_.templates.loading,
          model_.templates.status, model_.templates.failed, model_.channels, model_.config);
    watch(settingsConcern, model_.config, model_.channels);
    watch(pressureConcern, model_.config, model_.hfp.windowMin, model_.hfp, model_.session.connected);
    watch(surfaceConcern, model_.surface.active, model_.surface.gex3D, model_.config);
}

void PaneBinding::mark(Concern concern) {
    const bool first = marked_ == 0;
    marked_ |= concern;
    if (!first) return;
    main_.post(whileThere_([this] { flush(); }));
}

void PaneBinding::flush() {
    ++flushes_;
    unsigned concerns = std::exchange(marked_, 0);  // what the views do in turn belongs to the next flush
    if (concerns & toolbarConcern) view_.toolbar.set(toolbarState());
    if (concerns & toastConcern) view_.toast.set(toastState());
    if (concerns & chartConcern) {
        const bool empty = model_.bars.displayCandles->empty();
        if (empty != view_.chart.empty()) concerns |= clockConcern;
        view_.chart.setEmpty(empty);
        view_.chart.setAccountProblem(text(model_.notices.accountProblem->value_or("")));
    }
    if (concerns & clockConcern) showClocks();
    if (concerns & panelsConcern)
        view_.panels.set({.accountPanelOpen = model_.panels.accountPanelOpen,
                          .configPanelOpen = model_.panels.configPanelOpen,
                          .templatesPanelOpen = model_.panels.templatesPanelOpen,
                          .simPanelOpen = model_.panels.simPanelOpen});
    if (concerns & templatesConcern) view_.templates.set(templatesState());
    if (concerns & settingsConcern) {
        view_.settings.refresh();
        view_.oscillator.set(model_.config->oscEnabled, model_.config->oscHeight);
    }
    if (concerns & pressureConcern) showPressure();
    if (concerns & surfaceConcern) view_.surface.refresh();
    if (concerns & sessionConcern) {
        if (!model_.session.isSignedIn) closePanels();  // nobody's, on the form
        view_.session.set(sessionState());
    }
}

// Countdown and clock change together, once a second of real time at most, so that they cost one repaint.
void PaneBinding::showClocks() {
    constexpr double least = 0.9;  // real seconds: at the market's own pace none is left out
    const ClockTexts texts = clockTexts(model_);
    view_.clocks.set(texts.countdown.text(), texts.clock.text(), texts.practice.text());
    if (!texts.any())
        second_.cancel();
    else if (!second_.active())
        second_.every(
            1, [this] { showClocks(); }, least);
}

void PaneBinding::closePanels() {
    view_.panels.setAccountPanelOpen(false);
    view_.panels.setTemplatesPanelOpen(false);
    view_.panels.setConfigPanelOpen(false);
    model_.setGex3DActive(false);
    view_.panels.setSimPanelOpen(false);
}

TemplatesViewModel::State PaneBinding::templatesState() const {
    const ChartTemplates& templates = model_.templates;
    const auto& list = templates.list.get();
    TemplatesViewModel::State out{.pair = text(model_.symbolSource()),
                                  .known = list.has_value(),
                                  .loading = templates.loading,
                                  .busy = templates.busy,
                                  .status = text(templates.status->value_or("")),
                                  .failed = templates.failed};
    for (std::size_t i = 0; i < out.rows.size(); ++i) {
        const std::string key = TemplatesService::slotKeys.at(i);
        TemplatesViewModel::Row& row = out.rows.at(i);
        row = {.key = text(key), .digit = text(ChartTemplates::digit(key)), .date = QObject::tr("empty")};
        const auto slot =
            list ? list->savedSlots.find(key) : std::map<std::string, TemplatesService::Slot>::const_iterator();
        if (!list || slot == list->savedSlots.end()) continue;
        row.present = true;
        row.preferred = list->preferred == key;
        if (slot->second.savedAt) row.date = text(ChartTemplates::fmtDate(*slot->second.savedAt));
    }
    return out;
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
    const double now = model_.clock().now();
    ToolbarViewModel::State out{.symbol = text(model_.currentSymbol()), .timeframe = model_.bars.timeframe};
    for (const std::string& iso : model_.options.futureExps.get()) {
        out.expirations.push_back(text(iso));
        out.expirationLabels.push_back(text(expDteLabel(iso, now)));
    }
    const auto& picked = model_.options.selectedExp.get();
    out.expiration = text(picked.value_or(""));
    out.expirationText = picked                      ? text(expDteLabel(*picked, now))
                         : out.expirations.isEmpty() ? text(odteLabel(now))
                                                     : QObject::tr("All expirations");
    for (const SettingChoice& source : findSetting("gexSource")->choices)
        if (source.value == model_.config->gexSource) out.gexSource = text(std::string(source.label));
    const ActionContext at{&model_};
    for (const char* id : {"gex3D", "hfPressure", "templates", "settings", "account", "simPanel", "simEnabled"})
        out.on.insert(QLatin1String(id), findAction(id)->isOn(at));
    return out;
}

ToastViewModel::State PaneBinding::toastState() const {
    if (const auto& toast = model_.notices.toast.get()) return {text(toast->title), text(toast->detail.value_or(""))};
    if (model_.notices.marketClosedNotice)
        return {QObject::tr("Market Closed"), QObject::tr("Trading resumes next session.")};
    return {};
}

}  // namespace vmr
