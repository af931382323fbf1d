#include "relay/PracticeRelay.h"

#include <future>

#include "base/AsioLoop.h"
#include "base/MarketTimer.h"
#include "relay/Accounts.h"
#include "relay/ChainPublisher.h"
#include "relay/ChannelHub.h"
#include "relay/ChannelName.h"
#include "relay/DerivedPublisher.h"
#include "relay/FaultConsole.h"
#include "relay/LevelsPublisher.h"
#include "relay/MarketPublisher.h"
#include "relay/MarketTime.h"
#include "relay/MetaPublisher.h"
#include "relay/MinutePublisher.h"
#include "relay/Recording.h"
#include "relay/ReplayPublisher.h"
#include "relay/RestServer.h"
#include "relay/SocketServer.h"
#include "relay/Tape.h"

namespace vmr::relay {

namespace {
constexpr double tickSeconds = 0.08;  // real ones
constexpr double tickGrid = 0.001;    // market time is told in milliseconds
constexpr double flushSeconds = 1;

/// What the engine is made from.
struct Supplies {
    const Instrument* tapeInstrument = nullptr;
    std::unique_ptr<TradeSource> tape;
    std::unique_ptr<RecordingReader> replay;
    std::unique_ptr<RecordingWriter> record;
};

/// All that lives on the relay's thread once it runs.
struct Engine {
    Engine(const Clock& theClock, const PracticeRelayOptions& options, Supplies supplies)
        : clock(theClock),
          accounts(theClock, options.tokenLife),
          derived(options.seed, [this](const Instrument& one) -> TradeSource& { return market->trades(one); }),
          recording(std::move(supplies.record)) {
        const Rush rush{options.busy, marketMs(clock) / 60000 * 60};
        auto marketChannels = std::make_unique<MarketPublisher>(hub, options.seed, rush, supplies.tapeInstrument,
                                                                std::move(supplies.tape));
        auto metaChannels = std::make_unique<MetaPublisher>(hub);
        market = marketChannels.get();
        meta = metaChannels.get();
        std::vector<std::unique_ptr<Publisher>> publishers;
        publishers.push_back(std::move(marketChannels));
        publishers.push_back(std::move(metaChannels));
        if (supplies.replay) {
            auto player = std::make_unique<ReplayPublisher>(hub, std::move(supplies.replay));
            replay = player.get();
            hub.add(std::move(player));
            idle = std::move(publishers);
        } else {
            for (auto& one : publishers) hub.add(std::move(one));
            addDerived();
        }
        if (recording) {
            hub.setTap([this](std::int64_t nowMs, const std::string& channel, const Frame& frame) {
                recording->write(nowMs, channel, frame);
            });
        }
        console.emplace(
            FaultConsole::Parts{clock, faults, accounts, hub, *market, *meta, sockets, api.cloud(), api.templates()});
    }

    void addDerived() {
        hub.add(std::make_unique<ChainPublisher>(hub, chains, clock));
        hub.add(std::make_unique<MinutePublisher>(hub, chains, clock));
        hub.add(std::make_unique<LevelsPublisher>(hub, derived));
        hub.add(std::make_unique<DerivedPublisher>());
    }

    std::optional<std::string> open(const PracticeRelayOptions& options) {
        if (options.templates)
            if (auto wrong = api.templates().keepIn(*options.templates)) return wrong;
        if (auto wrong = sockets.open(options.relayPort)) return wrong;
        if (auto wrong = rest.open(options.restPort)) return wrong;
        const auto tick = [this] { hub.tick(marketMs(clock)); };
        ticker.emplace(clock, loop()).every(tickGrid, tick, tickSeconds);
        steered = clock.onSteered(loop(), [tick](const ClockSteering&) { tick(); });
        if (recording) loop().every(flushSeconds, flushSeconds, [this] { recording->flush(); });
        return std::nullopt;
    }

    /// Runs `work` on the relay's thread and gives what it gives.
    template <class F>
    auto invoke(F work) -> decltype(work()) {
        if (loop().isCurrent()) return work();
        auto done = std::make_shared<std::promise<decltype(work())>>();
        auto result = done->get_future();
        loop().post([done, &work] { done->set_value(work()); });
        return result.get();
    }

    /// Ends the sockets first, then the thread with its queued work, which still refers to the members below.
    ~Engine() {
        invoke([this] {
            ticker.reset();
            steered.reset();
            sockets.stop();
            rest.stop();
            return true;
        });
        thread.reset();
    }

    AsioLoop& loop() { return thread->loop(); }

    const Clock& clock;
    Faults faults;
    Accounts accounts;
    DerivedMarket derived;
    ChainBook chains{derived};
    std::unique_ptr<RecordingWriter> recording;
    ChannelHub hub;
    std::vector<std::unique_ptr<Publisher>>
        idle;  // the market's publishers, unused while a recording plays; the console still refers to them
    MarketPublisher* market;
    MetaPublisher* meta;
    ReplayPublisher* replay = nullptr;
    RestApi api{accounts, faults, clock};
    std::unique_ptr<AsioThread> thread = std::make_unique<AsioThread>("vmr-relay");
    SocketServer sockets{{loop(), clock, accounts, faults, hub}};
    RestServer rest{loop(), api, faults};
    std::optional<FaultConsole> console;
    std::optional<MarketTimer> ticker;  // this and the next on the relay's thread alone
    ClockWatch steered;
};

/// The market that a tape is; nothing and what is wrong in `error` when it cannot be played.
std::unique_ptr<TradeSource> loadTape(const TapeOptions& options, const Instrument*& instrument, std::string& error) {
    instrument = findTradable(options.symbol);
    if (instrument) return Tape::load(options.file, instrument->tick(), error);
    error = "\"" + options.symbol + "\" is neither a futures root nor a stock of the practice market";
    return nullptr;
}
}  // namespace

namespace {
/// Opens the files; what is wrong, if anything. The file to write comes last: opening it empties it, and no other
/// fault may cost an old recording.
std::optional<std::string> supply(const PracticeRelayOptions& options, Supplies& supplies) {
    std::string error;
    if (options.tape && options.replay) return "a tape and a recording cannot play at once";
    if (options.record && options.replay) {
        std::error_code ignored;
        const bool same = std::filesystem::equivalent(*options.record, *options.replay, ignored);
        if (same) return "the recording " + options.replay->string() + " cannot be played and written at once";
    }
    if (options.tape && !(supplies.tape = loadTape(*options.tape, supplies.tapeInstrument, error))) return error;
    if (options.replay && !(supplies.replay = RecordingReader::open(*options.replay, error))) return error;
    if (options.record && !(supplies.record = RecordingWriter::create(*options.record, error))) return error;
    return std::nullopt;
}
}  // namespace

struct PracticeRelay::Impl {
    const Clock& clock;
    PracticeRelayOptions options;
    std::unique_ptr<Engine> engine;
};

PracticeRelay::PracticeRelay(const Clock& clock, PracticeRelayOptions options)
    : impl_(new Impl{clock, std::move(options), nullptr}) {}

PracticeRelay::~PracticeRelay() = default;

std::optional<std::string> PracticeRelay::start() {
    if (impl_->engine) return "the relay runs already";
    const PracticeRelayOptions& options = impl_->options;
    Supplies supplies;
    if (auto wrong = supply(options, supplies)) return wrong;
    auto engine = std::make_unique<Engine>(impl_->clock, options, std::move(supplies));
    if (auto wrong = engine->invoke([&] { return engine->open(options); })) return wrong;
    impl_->engine = std::move(engine);
    return std::nullopt;
}

std::string PracticeRelay::relayUrl() const {
    return impl_->engine ? "ws://127.0.0.1:" + std::to_string(impl_->engine->sockets.port()) + "/" : std::string();
}

std::string PracticeRelay::restUrl() const {
    return impl_->engine ? "http://127.0.0.1:" + std::to_string(impl_->engine->rest.port()) : std::string();
}

std::string PracticeRelay::apiKey() const { return std::string(Accounts::apiKey); }

std::vector<std::pair<std::string, std::string>> PracticeRelay::variables() const {
    std::vector<std::pair<std::string, std::string>> all{{"VMR_RELAY_URL", relayUrl()}, {"VMR_API_KEY", apiKey()}};
    for (const char* name :
         {"VMR_IDENTITY_URL", "VMR_SECURETOKEN_URL", "VMR_FUNCTIONS_URL", "VMR_FIRESTORE_URL", "VMR_DOWNLOADS_URL"})
        all.emplace_back(name, restUrl());
    return all;
}

std::string PracticeRelay::email() const { return std::string(Accounts::email); }

std::string PracticeRelay::password() const { return std::string(Accounts::password); }

std::string PracticeRelay::command(const std::string& line) {
    if (!impl_->engine) return "error: the relay does not run";
    return impl_->engine->invoke([&] { return impl_->engine->console->run(line); });
}

std::vector<Candle> PracticeRelay::ledger(const std::string& channel) const {
    const auto name = marketChannel(channel);
    if (!name || !impl_->engine) return {};
    Engine& engine = *impl_->engine;
    if (engine.replay) return engine.invoke([&] { return engine.replay->bars(channel); });
    return engine.invoke([&] { return engine.market->ledger(*name->instrument, marketMs(engine.clock)); });
}

std::optional<std::string> PracticeRelay::recordingProblem() const {
    if (!impl_->engine || !impl_->engine->recording) return std::nullopt;
    return impl_->engine->invoke([&] { return impl_->engine->recording->problem(); });
}

}  // namespace vmr::relay
