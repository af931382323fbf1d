// The account's file: when it is written, what it holds, and what happens when it cannot be read or written.
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "sim/SimAccountText.h"
#include "sim/SimScript.h"
#include "sim/SimStore.h"

namespace vmr::test {
namespace {

namespace fs = std::filesystem;
using sim::Side;
using sim::Snapshot;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

/// An account with every kind of row and every optional field.
Snapshot richAccount() {
    SimScript sim;
    sim.run(
        "trade 100; quote 99.75 100; buy 2 sl=40 tp=8; sell 1; buy 1 limit=90.1 sl=3; sell 1 stop=80 limit=79; "
        "root ES; quote 5 5; sell 1; buy 1; buy 1 stop=7 tp=2");
    Snapshot account = sim.engine.snapshot();
    account.orders[2].filledAt = account.orders[2].createdAt + 0.1;
    account.orders[2].fillPrice = 1e-300;
    account.positions["flat \"\\\n"] = {0, -0.0, 0.1 + 0.2};
    account.positions["far"] = {std::numeric_limits<std::int64_t>::min(), 1.7976931348623157e308,
                                12345678901234567890.0};
    return account;
}

TEST(SimAccountText, ReadsBackEqualAndHasTheForm) {
    const Snapshot account = richAccount();
    const std::string text = sim::accountText(account).value_or("");
    const auto read = sim::readAccount(text);
    ASSERT_TRUE(read);
    EXPECT_TRUE(*read == account);
    EXPECT_EQ(sim::accountText(*read), text);

    Snapshot one;
    sim::Order order;
    order.id = UuidSource(5).next();
    order.sym = "NQ";
    order.type = sim::OrderType::stopLimit;
    order.stopPrice = 100.25;
    order.createdAt = sim::dateFrom1970(openHours) + 0.5;
    order.bracket = sim::BracketSpec{};
    one.orders = {order};
    EXPECT_EQ(sim::accountText(one),
              R"({"balance":50000,"startBalance":50000,"positions":{},"orders":[{"id":")" + order.id.text() +
                  R"(","sym":"NQ","side":"buy","type":"stopLimit","qty":1,"stopPrice":100.25,"state":"working",)"
                  R"("createdAt":802792800.5,"bracket":{},"tag":""}],"fills":[],"commission":2.5,"trades":[],)"
                  R"("openTrades":{}})");
}

TEST(SimAccountText, AllOrNothing) {
    const std::string text = sim::accountText(richAccount()).value_or("");
    struct Row {
        const char* name;
        const char* from;  // its first place is replaced
        const char* to;
        bool reads;
    };
    const Row rows[] = {
        {"an unknown key", "{", R"({"later":[1],)", true},
        {"no trades", R"("trades")", R"("older")", true},
        {"null for nothing", R"("bracket":{"slTicks":3})", R"("bracket":null)", true},
        {"a whole number with a point", R"("qty":2)", R"("qty":2.0)", true},
        {"no tag", R"(,"tag":"SL"})", "}", false},
        {"an unknown side", R"("side":"sell")", R"("side":"hold")", false},
        {"half a contract", R"("qty":2)", R"("qty":2.5)", false},
        {"text for a number", R"("balance":)", R"("balance":"1","x":)", false},
        {"a broken identity", R"("id":")", R"("id":"x)", false},
        {"a list for a map", R"("positions":{)", R"("positions":[],"x":{)", false},
        {"wrong open trades", R"("openTrades":{)", R"("openTrades":{"a":{},)", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::string changed = text;
        const auto at = changed.find(row.from);
        ASSERT_NE(at, std::string::npos);
        changed.replace(at, std::string(row.from).size(), row.to);
        EXPECT_EQ(sim::readAccount(changed).has_value(), row.reads);
    }
    for (const char* other : {"", "[]", "null", "{", "{}"}) EXPECT_FALSE(sim::readAccount(other)) << other;

    const auto twice = sim::readAccount(
        R"({"balance":1,"balance":2,"startBalance":1,"positions":{"NQ":{"qty":3,"avg":1,"realized":0},)"
        R"("NQ":{"qty":4,"avg":1,"realized":0}},"orders":[],"fills":[],"commission":0})");
    ASSERT_TRUE(twice);
    EXPECT_EQ(twice->balance, 1) << "of repeated keys the first";
    EXPECT_EQ(twice->positions.at("NQ").qty, 3);
}

class SimSaving : public testing::Test {
 protected:
    void SetUp() override {
        std::string name = (fs::temp_directory_path() / "velmora-sim-XXXXXX").string();
        ASSERT_TRUE(::mkdtemp(name.data()));
        folder = name;
    }
    void TearDown() override { fs::remove_all(folder); }

    std::shared_ptr<SimStore> store() {
        return std::make_shared<SimStore>(
            folder / "Velmora", time, [this](const fs::path& path, std::string_view text) {
                ++writes;
                return failing ? std::optional<std::string>("no space left") : replaceFile(path, text);
            });
    }
    std::unique_ptr<SimEngine> engine() {
        return std::make_unique<SimEngine>(SimSetup{.clock = time,
                                                    .session = session,
                                                    .ids = UuidSource(3),
                                                    .store = store(),
                                                    .main = &main,
                                                    .files = &files,
                                                    .log = [this](const std::string& line) { lines.push_back(line); }});
    }
    Snapshot saved() const { return sim::readAccount(readFile(file()).value_or("")).value_or(Snapshot{}); }
    fs::path file() const { return folder / "Velmora" / "sim-account.json"; }
    static void buy(SimEngine& engine) { engine.place("NQ", Side::buy, sim::OrderType::market, 1); }

    fs::path folder;
    TestTime time{openHours};
    TestQueue main{time};
    TestQueue files{time};
    SessionTime session;
    int writes = 0;
    bool failing = false;
    std::vector<std::string> lines;
};

TEST_F(SimSaving, ChangesOfASecondAreOneWrite) {
    const auto sim = engine();
    sim->onQuote("NQ", 100, 100);
    sim->onTrade("NQ", 100);
    for (int i = 0; i < 3; ++i, time.advance(0.1)) buy(*sim);
    time.advance(0.65);
    EXPECT_EQ(writes, 0);
    time.advance(0.1);
    EXPECT_EQ(writes, 1);
    EXPECT_EQ(saved(), sim->snapshot());
    EXPECT_EQ(saved().fills.size(), 3u);
    struct stat status {};
    ASSERT_EQ(::stat(file().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600u);
    time.advance(10);
    EXPECT_EQ(writes, 1) << "nothing changed";
    EXPECT_TRUE(lines.empty());
}

TEST_F(SimSaving, EveryOperationThatChangesSomethingIsSaved) {
    const auto sim = engine();
    sim->onQuote("NQ", 100, 100);
    const auto firstId = [&] { return sim->orders().front().id; };
    const std::function<void()> operations[] = {
        [&] { buy(*sim); },
        [&] { sim->setProtective("NQ", "SL", 90); },
        [&] { sim->modify(firstId(), 91); },
        [&] { sim->cancel(firstId()); },
        [&] {
            sim->place("NQ", Side::buy, sim::OrderType::stopLimit, 1, 99, 101, {{4, 40}});
        },
        [&] { sim->modifyProjectedLeg(firstId(), "SL", 80); },
        [&] { sim->onTrade("NQ", 101); },  // turns it into a limit
        [&] { sim->onTrade("NQ", 98); },
        [&] { sim->cancelAll("NQ"); },
        [&] { sim->flatten("NQ"); },
        [&] { sim->resetAccount(1); },
    };
    for (const auto& operation : operations) {
        SCOPED_TRACE(&operation - operations);
        const int before = writes;
        operation();
        time.advance(1);
        EXPECT_EQ(writes, before + 1);
        EXPECT_TRUE(saved() == sim->snapshot());
    }
}

TEST_F(SimSaving, AnAccountGoesOnAfterARestart) {
    auto sim = engine();
    sim->onTrade("NQ", 100);
    sim->place("NQ", Side::buy, sim::OrderType::market, 2, {}, {}, sim::BracketSpec{40, 80});
    sim->place("NQ", Side::buy, sim::OrderType::limit, 1, 99.0, {}, sim::BracketSpec{{}, 8});
    sim->commission = 3;
    const Snapshot before = sim->snapshot();
    EXPECT_TRUE(sim->flushPendingSave());
    EXPECT_EQ(writes, 1) << "at once";
    EXPECT_TRUE(sim->flushPendingSave());
    time.advance(2);
    EXPECT_EQ(writes, 1) << "the delayed save has nothing left to do";
    sim.reset();
    sim = engine();
    EXPECT_TRUE(sim->snapshot() == before);
    sim->onQuote("NQ", 90, 90);
    EXPECT_EQ(sim->fills().size(), 1u) << "no last price";
    sim->onTrade("NQ", 98.5);
    EXPECT_EQ(sim->fills().front().price, 99);
    EXPECT_EQ(sim->positions().at("NQ").qty, 3);
}

TEST_F(SimSaving, AFailedSaveIsTriedAgainAndSaysSoOnce) {
    const auto sim = engine();
    sim->onTrade("NQ", 100);
    failing = true;
    buy(*sim);
    time.advance(1.5);
    EXPECT_EQ(writes, 1);
    time.advance(4);
    EXPECT_EQ(writes, 1);
    time.advance(10.5);
    EXPECT_EQ(writes, 4) << "after 1, 6, 11 and 16 s";
    EXPECT_FALSE(sim->flushPendingSave());
    EXPECT_THAT(lines, ElementsAre(HasSubstr("no space left")));
    EXPECT_FALSE(fs::exists(file()));
    failing = false;
    time.advance(5);
    EXPECT_EQ(saved(), sim->snapshot());
    EXPECT_THAT(lines, ElementsAre(HasSubstr("no space left"), HasSubstr("saved again")));

    sim->updateSpecs({{"NQ", {0, 5}}});
    sim->flatten("NQ");
    time.advance(7);
    EXPECT_THAT(lines.back(), HasSubstr("not finite"));
    EXPECT_EQ(saved().fills.size(), 1u) << "the last good state";
    sim->resetAccount(100);
    time.advance(1);
    EXPECT_EQ(saved().balance, 100);
}

TEST_F(SimSaving, AnUndecodableFileIsKeptAndTheAccountStartsAnew) {
    for (const char* bad : {"{\"balance\":1}", ""}) {
        SCOPED_TRACE(bad);
        fs::create_directories(file().parent_path());
        ASSERT_EQ(replaceFile(file(), bad), std::nullopt);
        const auto sim = engine();
        EXPECT_TRUE(sim->snapshot() == Snapshot{});
        EXPECT_THAT(lines, ElementsAre(HasSubstr("cannot be read")));
        lines.clear();
        time.advance(5);
        EXPECT_EQ(readFile(file()), bad) << "nothing is touched before there is something to save";
        const std::string kept = file().string() + ".bad-" + std::to_string(static_cast<long>(time.now()) + 1);
        sim->resetAccount(7);
        time.advance(1);
        EXPECT_EQ(readFile(kept), bad);
        EXPECT_EQ(saved().balance, 7);
    }
}

TEST_F(SimSaving, ASecondProcessReadsAndDoesNotWrite) {
    auto first = engine();
    first->resetAccount(11);
    EXPECT_TRUE(first->flushPendingSave());
    {
        const auto second = engine();
        EXPECT_FALSE(second->keepsAccount());
        EXPECT_THAT(lines, ElementsAre(AllOf(HasSubstr("another Velmora"), HasSubstr("not be saved"))));
        EXPECT_EQ(second->balance(), 11);
        second->resetAccount(22);
        time.advance(10);
        EXPECT_TRUE(second->flushPendingSave());
    }
    EXPECT_EQ(writes, 1);
    EXPECT_EQ(saved().balance, 11);
    first.reset();
    EXPECT_TRUE(engine()->keepsAccount());
}

TEST_F(SimSaving, AnOlderSaveNeverReplacesANewerOne) {
    const auto file = store();
    const auto save = [&](std::uint64_t from) {
        for (std::uint64_t revision = from; revision <= 40; revision += 2) {
            Snapshot account;
            account.balance = static_cast<double>(revision);
            EXPECT_EQ(file->save(account, revision), std::nullopt);
        }
    };
    std::thread odd(save, 1), even(save, 2);
    odd.join();
    even.join();
    EXPECT_EQ(saved().balance, 40);
    EXPECT_EQ(file->save(Snapshot{}, 39), std::nullopt);
    EXPECT_EQ(saved().balance, 40);
}

}  // namespace
}  // namespace vmr::test
