// What a finished trade tells of its way, and the lists that a person sorts and takes along.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>

#include "base/FileReplace.h"
#include "sim/SimAccountText.h"
#include "sim/SimLists.h"
#include "sim/SimStore.h"
#include "tests/sim/SimScript.h"

namespace vmr::test {
namespace {

using sim::Trade;
using testing::ElementsAre;

/// Trades with a store in virtual time, so that the account can begin again in the middle.
struct Restarting {
    ~Restarting() { std::filesystem::remove_all(folder); }
    std::unique_ptr<SimEngine> engine() {
        return std::make_unique<SimEngine>(
            SimSetup{time, session, UuidSource(1), std::make_shared<SimStore>(file, time), &main, &main});
    }
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("velmora-lists-" + UuidSource().next().text());
    const std::filesystem::path file = folder / "Velmora" / "sim-account.json";
    TestTime time;
    TestQueue main{time};
    SessionTime session;
};

// In NQ a point is worth 20.
TEST(SimExcursions, AreTheWorstAndTheBestThatATradeStoodAt) {
    for (const auto& [name, script, expected] : {
             std::tuple("a long, by trades and not by quotes",
                        "quote 100 100; buy 1; trade 97; trade 105; quote 1 200; quote 101 101; trade 101; sell 1",
                        "-60/100/20"),
             {"a short", "quote 100 100; sell 1; trade 97; trade 105; quote 98 98; buy 1", "-100/60/40"},
             {"its own exit counts", "quote 100 100; buy 1; quote 90 90; sell 1", "-200/0/-200"},
             {"a gap past the target is none of it", "quote 100 100; buy 1; protect TP 105; trade 120", "0/100/100"},
             {"what was closed in part stays in it",
              "quote 100 100; buy 2; trade 110; quote 110 110; sell 1; trade 95; trade 100; quote 100 100; sell 1",
              "0/400/200"},
             {"an add moves the average",
              "quote 100 100; buy 1; quote 110 110; buy 1; trade 104; quote 105 105; sell 2", "-40/200/0"},
             {"a reversal begins anew",
              "quote 100 100; buy 1; trade 103; quote 102 102; sell 2; trade 100; quote 101 "
              "101; buy 1",
              "0/60/40 0/40/20"},
             {"another root's trades are none of it", "quote 100 100; buy 1; root ES; trade 1; root NQ; sell 1",
              "0/0/0"},
             {"over a restart", "quote 100 100; buy 1; trade 95; trade 103; restart; trade 101; quote 101 101; sell 1",
              "-100/60/20"},
         }) {
        Restarting at;
        auto engine = at.engine();
        std::string rest = script;
        if (const auto cut = rest.find("restart;"); cut != std::string::npos) {
            SimScript(at.time, *engine).run(rest.substr(0, cut));
            engine->flushPendingSave();
            engine.reset();
            engine = at.engine();
            rest = rest.substr(cut + 8);
        }
        SimScript(at.time, *engine).run(rest);
        std::string told;
        for (auto trade = engine->trades().rbegin(); trade != engine->trades().rend(); ++trade)
            told += (told.empty() ? "" : " ") + doubleText(trade->mae.value_or(-1)) + "/" +
                    doubleText(trade->mfe.value_or(-1)) + "/" + doubleText(trade->pnl);
        EXPECT_EQ(told, expected) << name;
        EXPECT_EQ(sim::readAccount(*sim::accountText(engine->snapshot())), engine->snapshot());
    }
}

// Without a change of the account, what the market does is saved within seconds and not every second.
TEST(SimExcursions, AreSavedNowAndThenAndOldTradesHaveNone) {
    Restarting at;
    auto engine = at.engine();
    SimScript script(at.time, *engine);
    script.run("quote 100 100; buy 1; wait 1.1");
    const auto saved = [&] { return sim::readAccount(readFile(at.file).value_or(""))->openTrades.at("NQ").mfe; };
    script.run("trade 104; wait 9");
    EXPECT_EQ(saved(), 0);
    script.run("trade 105; wait 2");
    EXPECT_EQ(saved(), 100);

    // a trade that began when nobody looked has no excursions, not those of its end
    std::string text = *sim::accountText(engine->snapshot());
    text.replace(text.find(R"(,"mae")"), text.find('}', text.find(R"(,"mae")")) - text.find(R"(,"mae")"), "");
    engine.reset();
    replaceFile(at.file, text);
    engine = at.engine();
    SimScript(at.time, *engine).run("trade 90; quote 90 90; sell 1");
    ASSERT_EQ(engine->trades().size(), 1u);
    EXPECT_EQ(engine->trades()[0].mae, std::nullopt);
    EXPECT_EQ(engine->trades()[0].pnl, -200);
}

TEST(SimLists, AreSortedFilteredAndTakenAlong) {
    const auto trade = [](const char* root, double entry, double pnl, double day, std::optional<double> mae) {
        return Trade{.id = {},
                     .sym = root,
                     .side = sim::Side::sell,
                     .qty = 2,
                     .entry = entry,
                     .exit = 4104.4,
                     .pnl = pnl,
                     .fees = 5,
                     .openedAt = day * 86400 + 0.25,
                     .closedAt = day * 86400 + 59.9996,
                     .exitTag = entry > 100 ? "SL" : "",
                     .mae = mae,
                     .mfe = mae};
    };
    const std::vector<Trade> all{trade("NQ", 99, 3, 3, {}), trade("ES", 101, -7, 2, -9.5), trade("NQ", 100, 3, 1, -2),
                                 trade("a,\"b\"", 102, 8, 1, 0)};
    const sim::DayOf dayOf = [](sim::Date date) { return static_cast<std::int64_t>(date / 86400); };
    const auto entries = [&](sim::ListFilter filter, sim::TradeColumn by, bool descending) {
        std::vector<double> out;
        for (const Trade& one : sim::listTrades(all, filter, dayOf, by, descending)) out.push_back(one.entry);
        return out;
    };
    using Column = sim::TradeColumn;
    EXPECT_THAT(entries({}, Column::time, true), ElementsAre(99, 101, 100, 102));
    EXPECT_THAT(entries({}, Column::root, false), ElementsAre(101, 99, 100, 102));
    EXPECT_THAT(entries({}, Column::result, true), ElementsAre(102, 99, 100, 101)) << "equal ones as given";
    EXPECT_THAT(entries({}, Column::result, false), ElementsAre(101, 99, 100, 102));
    EXPECT_THAT(entries({}, Column::mae, true), ElementsAre(102, 100, 101, 99)) << "unknown ones last";
    EXPECT_THAT(entries({}, Column::mae, false), ElementsAre(101, 100, 102, 99));
    EXPECT_THAT(entries({"NQ", std::nullopt}, Column::entry, true), ElementsAre(100, 99));
    EXPECT_THAT(entries({"", 1}, Column::entry, true), ElementsAre(102, 100));

    EXPECT_EQ(sim::tradesCsv(std::span(all).subspan(0, 1)),
              "root,side,qty,entryTime,entryPrice,exitTime,exitPrice,pnl,fees,exitKind,mae,mfe\r\n"
              "NQ,sell,2,2001-01-04T00:00:00.250Z,99,2001-01-04T00:01:00.000Z,4104.4,3,5,manual,,\r\n");
    EXPECT_THAT(sim::tradesCsv(all), testing::HasSubstr("\r\n\"a,\"\"b\"\"\",sell,"));
    EXPECT_THAT(sim::tradesCsv(all), testing::HasSubstr(",5,SL,-9.5,-9.5\r\n"));
    const sim::Fill fill{{}, "GC", sim::Side::buy, 3, 4104.3, 7.5, 0.5, "TP"};
    EXPECT_EQ(sim::fillsCsv(std::span(&fill, 1)),
              "root,side,qty,time,price,fee,tag\r\nGC,buy,3,2001-01-01T00:00:00.500Z,4104.3,7.5,TP\r\n");

    Restarting at;
    std::filesystem::create_directories(at.folder);
    const auto file = at.folder / "trades.csv";
    ASSERT_EQ(sim::writeCsv(file, sim::tradesCsv(all)), std::nullopt);
    struct stat status {};
    ASSERT_EQ(::stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600u);
    EXPECT_EQ(readFile(file), sim::tradesCsv(all));
    EXPECT_NE(sim::writeCsv(at.folder / "missing" / "trades.csv", "x"), std::nullopt);
}

}  // namespace
}  // namespace vmr::test
