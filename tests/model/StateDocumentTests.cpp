// The state document: fields under their names, exact numbers, null for what is none.
#include "model/StateDocument.h"

#include <cmath>
#include <limits>

#include "model/PaneFixture.h"

namespace vmr::test {
namespace {

using StateDocument = PaneFixture;

TEST_F(StateDocument, HoldsEveryPaneUnderItsNamesAndTheClock) {
    openSymbol("NQ");
    event("meta:instruments", R"({"catalog":{"futures":[{"sym":"NQ","sources":["QQQ"],"tick":"nan"}]}})");
    event("derived:QQQ", R"({"b":1,"a":2})");
    model->flashToast("title");
    model->logLines.clear();
    model->append("quote \" and \xff and \n");
    const double inf = std::numeric_limits<double>::infinity();
    model->candles = {{minute, std::nan(""), inf, -inf, 0.1, 1e-310}, {INT64_MAX, 1, 2, 3, 4, 5}};
    model->hfScale = std::nan("");
    AppModel other(surroundings());
    time.advance(0.25);

    const auto document = Json::parse(stateDocument(time, {model.get(), &other}));
    ASSERT_TRUE(document);
    EXPECT_EQ((*document)["clock"].number(), wednesdayAt10 + 0.25);
    ASSERT_EQ((*document)["panes"].size(), 2u);
    const JsonView pane = *(*document)["panes"].items().begin();
    const std::pair<const char*, const char*> fields[] = {
        {"authError", "null"},
        {"signingIn", "false"},
        {"connLimited", "false"},
        {"marketClosedNotice", "false"},
        {"timeframe", "1"},
        {"hfScale", "null"},
        {"catFutures",
         R"([{"sym":"NQ","sources":["QQQ"],"defaultSource":"QQQ","pair":null,"tick":null,"tickValue":5.0,"hfScale":1.0}])"},
        {"derivedFields", R"(["a","b"])"},
        {"toast", R"({"title":"title","detail":null})"},
        {"logLines", "[\"quote \\\" and \xEF\xBF\xBD and \\n\"]"},
        {"candles", "[[1781100000,null,null,null,0.1,1e-310],[9223372036854775807,1.0,2.0,3.0,4.0,5.0]]"},
    };
    for (const auto& [key, text] : fields) {
        EXPECT_NE(pane[key].kind(), JsonView::Kind::missing) << key;
        EXPECT_EQ(pane[key].text(), text) << key;
    }
    EXPECT_EQ(pane["config"].size(), 60u);
}

}  // namespace
}  // namespace vmr::test
