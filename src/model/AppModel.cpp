#include "model/AppModel.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/NumberText.h"
#include "store/ConfigIO.h"

namespace vmr {

namespace {
int liveModels = 0;

constexpr const char* firstChart = "futures:NQU6";
constexpr const char* firstLevels = "derived:QQQ";

// Everything that the chart can show.
GexConfig everythingOn(GexConfig c) {
    for (bool* field : {&c.gexEnabled,     &c.gexBubbles,  &c.dexEnabled,       &c.wallsEnabled, &c.levelsEnabled,
                        &c.sessionEnabled, &c.showOpen,    &c.showPrev,         &c.vwapEnabled,  &c.vwapNyEnabled,
                        &c.showSecondary,  &c.hfEnabled,   &c.hfLateralEnabled, &c.hfBubbles,    &c.vixEnabled,
                        &c.ema1Enabled,    &c.ema2Enabled, &c.oscEnabled,       &c.oscNq,        &c.oscEs,
                        &c.oscVix,         &c.oscCall,     &c.oscPut,           &c.oscNet})
        *field = true;
    return c;
}
}  // namespace

AppModel::AppModel(PaneSurroundings surroundings, std::optional<PaneState> restore)
    : config(ConfigIO::load(surroundings.preferences)),
      at_(std::move(surroundings)),
      alive_(std::make_shared<int>(0)),
      restorePane_(std::move(restore)),
      counted_(true),
      overlays_(at_.session) {
    ++liveModels;
    if (at_.bench.bench) {
        ConfigIO::suppressSave = true;
        config = everythingOn(config);
        at_.print("[bench] config forced — all overlays + oscillator ON");
    }
    if (const auto stored = at_.preferences.get(ConfigIO::timeframeKey)) {
        const auto minutes = parseInt(*stored);
        if (minutes && *minutes > 0 && *minutes <= INT32_MAX) timeframe = static_cast<int>(*minutes);
    }
    if (restorePane_ && restorePane_->timeframe >= 1 && restorePane_->timeframe <= INT32_MAX)
        timeframe = static_cast<int>(restorePane_->timeframe);

    relay_ = at_.makeRelay();
    RelayClient::Callbacks callbacks;
    callbacks.onLog = [this](const std::string& text) { append(text); };
    // what the relay told before it heard of a sign-out comes after it, and is too late
    callbacks.onConnected = [this] {
        if (isSignedIn) onConnected();
    };
    callbacks.onConnectionLimit = [this] { connLimited = true; };
    callbacks.onDisconnected = [this] {
        if (!isSignedIn) return;
        connected = false;
        status = "Disconnected (reconnecting…)";
    };
    callbacks.onChannelMessage = [this](const ChannelMessage& message, const std::string& type) {
        onChannelMessage(message, type);
    };
    callbacks.onPrepare = &AppModel::prepare;
    relay_->setCallbacks(std::move(callbacks));

    if (at_.auth.refreshToken) startStoredSession();
}

AppModel::~AppModel() {
    shutdown();
    alive_.reset();
    relay_.reset();
}

int AppModel::liveCount() { return liveModels; }

std::map<std::string, double>& AppModel::hfScaleOverrides() {
    static std::map<std::string, double> overrides;
    return overrides;
}

void AppModel::startStoredSession() {
    isSignedIn = true;
    userEmail = at_.auth.email.value_or("");
    status = "Signed in, connecting…";
    // an answer that comes after a sign-out, perhaps into the session that followed it, is nobody's any more
    at_.main.post([this, weak = std::weak_ptr(alive_), session = session_] {
        if (weak.expired() || session != session_) return;
        if (at_.auth.tokenIsLive()) return connectRelay();
        at_.auth.refresh([this, weak, session](const std::variant<std::string, AuthError>& result) {
            if (weak.expired() || session != session_) return;
            if (std::holds_alternative<std::string>(result)) return connectRelay();
            at_.auth.signOut();
            isSignedIn = false;
            authError = "Session expired — please sign in again.";
            status = "Not connected";
        });
    });
}

void AppModel::connectRelay() {
    if (counted_) relay_->connect(tokenProvider());
}

TokenProvider AppModel::tokenProvider() {
    // called on the relay's queue: the session lives on the main loop
    return [this, weak = std::weak_ptr(alive_), &main = at_.main](std::function<void(TokenResult)> give) {
        main.post([this, weak, give = std::move(give)] {
            if (weak.expired()) return;
            if (at_.auth.tokenIsLive()) return give({*at_.auth.idToken, std::nullopt});
            at_.auth.refresh([give](const std::variant<std::string, AuthError>& result) {
                if (const auto* token = std::get_if<std::string>(&result))
                    give({*token, std::nullopt});
                else
                    give({"", std::get<AuthError>(result).text()});
            });
        });
    };
}

void AppModel::signIn(const std::string& email, const std::string& password, bool remember,
                      std::function<void(bool)> done) {
    signingIn = true;
    authError = std::nullopt;
    at_.auth.persistSession = remember;
    at_.auth.signIn(
        email, password,
        [this, weak = std::weak_ptr(alive_), email, done = std::move(done)](std::optional<AuthError> error) {
            if (weak.expired()) return;
            if (error) {
                // a sign-out in between is no failure to tell
                if (error->kind != AuthError::Kind::notSignedIn) authError = error->text();
            } else {
                userEmail = email;
                isSignedIn = true;
                status = "Signed in, connecting…";
                connectRelay();
            }
            signingIn = false;
            if (done) done(!error);
        });
}

void AppModel::signOut() {
    ++session_;
    relay_->disconnect();
    at_.auth.signOut();
    isSignedIn = false;
    connected = false;
    status = "Not connected";
    logLines.clear();
    logChanged();
    updateHfpTimer();
}

void AppModel::shutdown() {
    stopPresence();
    if (counted_) --liveModels;
    counted_ = false;
    relay_->disconnect();
    for (SerialQueue::TimerId* timer : {&barRollTimer_, &hfpTimer_}) {
        if (*timer != SerialQueue::noTimer) at_.main.cancel(*timer);
        *timer = SerialQueue::noTimer;
    }
}

void AppModel::onConnected() {
    connLimited = false;
    connected = true;
    status = "Connected";
    if (!subscribedChans.empty())
        append("→ reconnected — subscriptions re-flushed, snapshots merge in place");
    else
        openFirstChart();
    updateHfpTimer();
}

void AppModel::openFirstChart() {
    if (!chartChannel->empty()) return openChart(chartChannel.get(), levelsChannel.get());
    std::optional<std::string> wanted;
    if (restorePane_) {
        if (!restorePane_->gexSource.empty()) {
            GexConfig changed = config;
            changed.gexSource = restorePane_->gexSource;
            setConfig(changed);
        }
        wanted = restorePane_->symbol;
        restorePane_.reset();
    } else {
        wanted = at_.preferences.get(ConfigIO::lastSymbolKey);
    }
    const auto stocks = stockList();
    if (wanted && (std::find(stocks.begin(), stocks.end(), *wanted) != stocks.end() || isBuiltInStock(*wanted) ||
                   builtInFuture(*wanted)))
        switchSymbol(*wanted);
    else
        openChart(firstChart, firstLevels);
}

void AppModel::setConfig(const GexConfig& changed) {
    const GexConfig old = config;
    config = changed;
    if (!(old == changed)) {
        ConfigIO::save(at_.preferences, changed);
        if (old.vixMode != changed.vixMode) {
            vixCandles.clear();
            ++sideRevision_;
            reloadChart();
        } else {
            if (old.sessionStart != changed.sessionStart) rebuildSRLines();
            if (old.hfPressure != changed.hfPressure) updateHfpTimer();
            scheduleOverlays();
            ++chartVersion;
            chartVersionChanged();
        }
        simTakeCommission();
    }
}

void AppModel::append(const std::string& text) {
    if (text.starts_with("→")) at_.print("[app] " + text);
    logLines.push_back({at_.ids.next(), at_.clock.now(), text});
    while (logLines.size() > maxLogLines) logLines.pop_front();
    logChanged();
}

void AppModel::flashToast(const std::string& title, std::optional<std::string> detail) {
    toast = ToastMsg{title, std::move(detail)};
    at_.main.after(2.5, [this, weak = std::weak_ptr(alive_), generation = ++toastGen_] {
        if (!weak.expired() && toastGen_ == generation) toast = std::nullopt;
    });
}

void AppModel::flashMarketClosedNotice() {
    marketClosedNotice = true;
    at_.main.after(4.0, [this, weak = std::weak_ptr(alive_), generation = ++marketClosedGen_] {
        if (!weak.expired() && marketClosedGen_ == generation) marketClosedNotice = false;
    });
}

}  // namespace vmr
