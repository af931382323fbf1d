// The account's file: when it is written, what it holds, and what happens when it cannot be read or written.
#include <gmock/gmock.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "base/Paths.h"
#include "sim/SimAccountText.h"
#include "sim/SimStore.h"
#include "tests/sim/SimScript.h"

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
    sim::Order& order = account.orders.emplace_back();
    order.id = UuidSource(5).next();
    order.sym = "NQ";
    order.type = OrderType::stopLimit;
    order.stopPrice = 100.25;
    order.createdAt = 802792800.5;
    order.bracket.emplace();
    const std::string text = sim::accountText(account).value_or("");
    EXPECT_EQ(text, R"({"balance":50000,"startBalance":50000,"positions":{"flat \"\\\u000a":{"qty":0,"avg":-0.0,)"
                    R"("realized":0.30000000000000004}},"orders":[{"id":")" +
                        order.id.text() +
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
        return std::make_shared<SimStore>(file(), time, [this](const fs::path& path, std::string_view text) {
            ++writes;
            return failing ? std::optional<std::string>("no space left") : replaceFile(path, text);
        });
    }
    std::unique_ptr<SimEngine> engine() {
        const auto log = [this](const std::string& line) { lines.push_back(line); };
        return std::make_unique<SimEngine>(SimSetup{time, session, UuidSource(3), store(), &main, &files, {}, log});
    }
    Snapshot saved() const { return sim::readAccount(readFile(file()).value_or("")).value_or(Snapshot{}); }
    fs::path file() const { return folder / "Velmora" / "sim-account.json"; }
    void run(SimEngine& engine, const std::string& script) { SimScript(time, engine).run(script); }

    const fs::path folder = fs::temp_directory_path() / ("velmora-sim-" + UuidSource().next().text());
    TestTime time;  // a Wednesday, 10:00 in New York
    TestQueue main{time}, files{time};
    SessionTime session;
    int writes = 0;
    bool failing = false;
    std::vector<std::string> lines;
};

TEST_F(SimSaving, ChangesOfASecondAreOneWriteAndTheAccountGoesOnAfterARestart) {
    auto sim = engine();
    run(*sim, "trade 100; buy 1; wait 0.1; buy 1; wait 0.1; buy 1; wait 0.75");
    EXPECT_EQ(writes, 0);
    time.advance(0.1);
    EXPECT_EQ(writes, 1);
    EXPECT_EQ(saved(), sim->snapshot());
    struct stat status {};
    ASSERT_EQ(::stat(file().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600u);
    run(*sim, "buy 1 limit=99 tp=8");
    sim->commission = 3;
    const Snapshot before = sim->snapshot();
    EXPECT_TRUE(sim->flushPendingSave());
    EXPECT_EQ(writes, 2) << "at once";
    EXPECT_TRUE(sim->flushPendingSave());
    sim.reset();
    sim = engine();
    EXPECT_EQ(sim->snapshot(), before);
    run(*sim, "quote 90 90");
    EXPECT_EQ(sim->fills().size(), 3u) << "no last price";
    run(*sim, "trade 98.5");
    EXPECT_EQ(sim->fills().front().price, 99);
    EXPECT_EQ(sim->positions().at("NQ").qty, 4);
}

TEST_F(SimSaving, EveryOperationThatChangesSomethingIsSaved) {
    const auto sim = engine();
    run(*sim, "open 1 NQM6; quote 100 100");
    for (const char* operation :
         {"buy 1", "protect SL 90", "modify 0 91", "cancel 0", "buy 1 limit=99 stop=101 sl=4 tp=40", "leg 0 SL 80",
          "trade 101", /* turns it into a limit */ "trade 98", "trade 80" /* the stop */, "sell 3 tp=40", "buy 1",
          "cancelAll", "flatten", "reset 1"}) {
        SCOPED_TRACE(operation);
        const int before = writes;
        run(*sim, operation + std::string("; wait 1"));
        EXPECT_EQ(writes, before + 1);
        EXPECT_EQ(saved(), sim->snapshot());
    }
}

TEST_F(SimSaving, AFailedSaveIsTriedAgainAndSaysSoOnce) {
    const auto sim = engine();
    failing = true;
    run(*sim, "trade 100; buy 1; wait 16");
    EXPECT_EQ(writes, 4) << "after 1, 6, 11 and 16 s";
    EXPECT_FALSE(sim->flushPendingSave());
    EXPECT_THAT(lines, ElementsAre(HasSubstr("no space left")));
    EXPECT_EQ(sim->problem(), "Paper account not saved: no space left");
    EXPECT_FALSE(fs::exists(file()) || sim->lastSave());
    failing = false;
    time.advance(5);
    EXPECT_EQ(saved(), sim->snapshot());
    EXPECT_THAT(lines, ElementsAre(HasSubstr("no space left"), HasSubstr("saved again")));
    EXPECT_FALSE(sim->problem());
    EXPECT_THAT(sim->lastError().value_or(""), HasSubstr("no space left"));
    EXPECT_EQ(sim->lastSave(), sim::dateFrom1970(time.now()));
}

TEST_F(SimSaving, AnUndecodableFileIsKeptAndTheAccountStartsAnew) {
    for (const char* bad : {"{\"balance\":1}", ""}) {
        SCOPED_TRACE(bad);
        fs::create_directories(file().parent_path());
        ASSERT_EQ(replaceFile(file(), bad), std::nullopt);
        const auto sim = engine();
        EXPECT_EQ(sim->snapshot(), Snapshot{});
        EXPECT_THAT(std::exchange(lines, {}), ElementsAre(HasSubstr("cannot be read")));
        EXPECT_THAT(sim->problem().value_or(""), HasSubstr("set aside"));
        time.advance(5);
        EXPECT_EQ(readFile(file()), bad) << "nothing is touched before there is something to save";
        const std::string kept = file().string() + ".bad-" + std::to_string(static_cast<long>(time.now()) + 1);
        ASSERT_EQ(replaceFile(kept, "earlier"), std::nullopt);
        run(*sim, "reset 7; wait 1");
        EXPECT_EQ(readFile(kept), "earlier");
        EXPECT_EQ(readFile(kept + "-2"), bad);
        EXPECT_EQ(saved().balance, 7);
        EXPECT_FALSE(sim->problem()) << "it is over";
    }
}

TEST_F(SimSaving, ASecondProcessDoesNotWriteAndTakesOverWhenTheFirstHasEnded) {
    auto first = engine();
    first->resetAccount(11);
    EXPECT_TRUE(first->flushPendingSave());
    const auto second = engine();
    EXPECT_THAT(lines, ElementsAre(HasSubstr("another Velmora")));
    EXPECT_EQ(second->balance(), 11);
    second->commission = 1.25;  // the settings', which no file of another process changes
    run(*second, "reset 22; wait 10");
    EXPECT_TRUE(second->flushPendingSave());
    EXPECT_EQ(writes, 1);
    EXPECT_FALSE(second->keepsAccount());
    EXPECT_EQ(second->problem(), "Paper account read only: another Velmora has it");

    first->resetAccount(33);
    EXPECT_TRUE(first->flushPendingSave());
    first.reset();
    int told = 0;
    auto link = second->changed.connect([&](SimEngine::Field field) {
        EXPECT_EQ(second->balance(), 33) << "told once all has changed";
        told += field == SimEngine::Field::balance || field == SimEngine::Field::keeping;
    });
    time.advance(2);
    EXPECT_EQ(told, 2);
    link.end();
    EXPECT_TRUE(second->keepsAccount() && !second->problem());
    EXPECT_EQ(second->commission, 1.25);
    EXPECT_THAT(lines.back(), HasSubstr("this one keeps the account from now on"));
    time.advance(10);
    EXPECT_EQ(writes, 2) << "what was traded beside the first is gone";
    run(*second, "reset 44; wait 1");
    EXPECT_EQ(saved(), second->snapshot());
    EXPECT_FALSE(engine()->keepsAccount()) << "a third";
}

TEST(SimStore, EveryMarketHasAFileOfItsOwn) {
    EXPECT_EQ(SimStore::fileName(""), "sim-account.json");
    EXPECT_EQ(SimStore::fileName("seed-2"), "sim-account-seed-2.json");
    EXPECT_EQ(SimStore::fileName("tape-../a b.csv"), "sim-account-tape-.._2fa_20b.csv.json");
    const std::string endless(250, 'x');
    EXPECT_NE(SimStore::fileName(endless), SimStore::fileName(endless + "y"));
    EXPECT_LT(SimStore::fileName(endless).size(), 200u);
}

TEST(SimStore, WithoutAHomeTheSystemIsAsked) {
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME"}) ::unsetenv(name);
    const auto known = ::getpwuid(::getuid());
    for (const char* home : {"", "here", "/somewhere"}) {
        ::setenv("HOME", home, 1);
        const auto paths = Paths::practice();
        ASSERT_EQ(paths.has_value(), *home == '/' || known != nullptr);
        const fs::path root = *home == '/' ? home : known ? known->pw_dir : "";
        EXPECT_EQ(paths.value_or(Paths{}).data, paths ? root / ".local/share/Velmora/practice" : root) << home;
    }
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
