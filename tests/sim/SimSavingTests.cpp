// The account's file: when it is written, what it holds, and what happens when it cannot be read or written.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "sim/SimAccountText.h"
#include "sim/SimEngine.h"
#include "sim/SimStore.h"
#include "support/time/TestTime.h"

namespace vmr::test {
namespace {

namespace fs = std::filesystem;
using sim::OrderType;
using sim::Side;
using sim::Snapshot;
using testing::ElementsAre;
using testing::HasSubstr;

TEST(SimAccountText, HasTheFormAndIsReadAsAWholeOrNotAtAll) {
    Snapshot account;
    account.positions["flat \"\\\n"] = {0, -0.0, 0.1 + 0.2};
    account.orders.emplace_back();
    account.orders[0].id = UuidSource(5).next();
    account.orders[0].sym = "NQ";
    account.orders[0].type = OrderType::stopLimit;
    account.orders[0].stopPrice = 100.25;
    account.orders[0].createdAt = 802792800.5;
    account.orders[0].bracket = sim::BracketSpec{};
    const std::string text = sim::accountText(account).value_or("");
    EXPECT_EQ(text, R"({"balance":50000,"startBalance":50000,"positions":{"flat \"\\\u000a":{"qty":0,"avg":-0.0,)"
                    R"("realized":0.30000000000000004}},"orders":[{"id":")" +
                        account.orders[0].id.text() +
                        R"(","sym":"NQ","side":"buy","type":"stopLimit","qty":1,"stopPrice":100.25,"state":"working",)"
                        R"("createdAt":802792800.5,"bracket":{},"tag":""}],"fills":[],"commission":2.5,"trades":[],)"
                        R"("openTrades":{}})");
    const struct {
        const char *name, *from, *to;  // the first place is replaced
        bool reads;
    } rows[] = {
        {"an unknown key", "{", R"({"later":[1],)", true},
        {"no trades", R"("trades")", R"("older")", true},
        {"null for nothing", R"("bracket":{})", R"("bracket":null)", true},
        {"no tag", R"(,"tag":"")", "", false},
        {"half a contract", R"("qty":1)", R"("qty":1.5)", false},
        {"a broken identity", R"("id":")", R"("id":"x)", false},
        {"a list for a map", R"("positions":{)", R"("positions":[],"x":{)", false},
        {"wrong open trades", R"("openTrades":{)", R"("openTrades":{"a":{})", false},
        {"cut short", "]", "", false},
    };
    for (const auto& row : rows) {
        std::string changed = text;
        const auto at = changed.find(row.from);
        ASSERT_NE(at, std::string::npos) << row.name;
        changed.replace(at, std::string(row.from).size(), row.to);
        EXPECT_EQ(sim::readAccount(changed).has_value(), row.reads) << row.name;
    }
}

class SimSaving : public testing::Test {
 protected:
    ~SimSaving() override { fs::remove_all(folder); }

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
    static void buy(SimEngine& engine) { engine.place("NQ", Side::buy, OrderType::market, 1); }

    const fs::path folder = fs::temp_directory_path() / ("velmora-sim-" + UuidSource().next().text());
    TestTime time;  // a Wednesday, 10:00 in New York
    TestQueue main{time};
    TestQueue files{time};
    SessionTime session;
    int writes = 0;
    bool failing = false;
    std::vector<std::string> lines;
};

TEST_F(SimSaving, ChangesOfASecondAreOneWriteAndTheAccountGoesOnAfterARestart) {
    auto sim = engine();
    sim->onTrade("NQ", 100);
    for (int i = 0; i < 3; ++i, time.advance(0.1)) buy(*sim);
    time.advance(0.65);
    EXPECT_EQ(writes, 0);
    time.advance(0.1);
    EXPECT_EQ(writes, 1);
    EXPECT_EQ(saved(), sim->snapshot());
    struct stat status {};
    ASSERT_EQ(::stat(file().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600u);
    sim->place("NQ", Side::buy, OrderType::limit, 1, 99.0, {}, sim::BracketSpec{{}, 8});
    sim->commission = 3;
    const Snapshot before = sim->snapshot();
    EXPECT_TRUE(sim->flushPendingSave());
    EXPECT_EQ(writes, 2) << "at once";
    EXPECT_TRUE(sim->flushPendingSave());
    sim.reset();
    sim = engine();
    EXPECT_EQ(sim->snapshot(), before);
    sim->onQuote("NQ", 90, 90);
    EXPECT_EQ(sim->fills().size(), 3u) << "no last price";
    sim->onTrade("NQ", 98.5);
    EXPECT_EQ(sim->fills().front().price, 99);
    EXPECT_EQ(sim->positions().at("NQ").qty, 4);
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
            sim->place("NQ", Side::buy, OrderType::stopLimit, 1, 99, 101, sim::BracketSpec{4, 40});
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
        EXPECT_EQ(saved(), sim->snapshot());
    }
}

TEST_F(SimSaving, AFailedSaveIsTriedAgainAndSaysSoOnce) {
    const auto sim = engine();
    sim->onTrade("NQ", 100);
    failing = true;
    buy(*sim);
    time.advance(16);
    EXPECT_EQ(writes, 4) << "after 1, 6, 11 and 16 s";
    EXPECT_FALSE(sim->flushPendingSave());
    EXPECT_THAT(lines, ElementsAre(HasSubstr("no space left")));
    EXPECT_FALSE(fs::exists(file()));
    failing = false;
    time.advance(5);
    EXPECT_EQ(saved(), sim->snapshot());
    EXPECT_THAT(lines, ElementsAre(HasSubstr("no space left"), HasSubstr("saved again")));
}

TEST_F(SimSaving, AnUndecodableFileIsKeptAndTheAccountStartsAnew) {
    for (const char* bad : {"{\"balance\":1}", ""}) {
        SCOPED_TRACE(bad);
        fs::create_directories(file().parent_path());
        ASSERT_EQ(replaceFile(file(), bad), std::nullopt);
        const auto sim = engine();
        EXPECT_EQ(sim->snapshot(), Snapshot{});
        EXPECT_THAT(std::exchange(lines, {}), ElementsAre(HasSubstr("cannot be read")));
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
        EXPECT_THAT(lines, ElementsAre(HasSubstr("another Velmora")));
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
}

}  // namespace
}  // namespace vmr::test
