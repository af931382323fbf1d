// Decoded JSON: kinds, handles and how long documents live.
#include "base/Json.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>

#include "base/Reaper.h"

namespace vmr {
namespace {

TEST(Json, RefusesWhatIsNotOneDocument) {
    for (const char* text : {"", " ", "{", "[1,]", "{\"a\":1,}", "{'a':1}", "nul", "1 2", "\"\xff\"", "NaN", "\"abc",
                             // with something in it that alone would be mended
                             R"({"a":1e400,})", R"({"a":99999999999999999999 1})", R"(["\ud800)", R"([01e400])"})
        EXPECT_FALSE(Json::parse(text)) << text;
    EXPECT_FALSE(Json::parse(std::string(5000, '[') + std::string(5000, ']')));
    for (const char* text : {"1", "\"x\"", "null", " [ ] "}) EXPECT_TRUE(Json::parse(text)) << text;
}

TEST(Json, OddValuesDoNotCostTheWholeDocument) {
    const auto doc =
        Json::parse(R"({"big":123456789012345678901234,"neg":-99999999999999999999,"huge":1e400,"tiny":-1e999,)"
                    R"("max":18446744073709551615,"min":-9223372036854775808,"half":"a\ud800b\udc00\\ud800",)"
                    R"("pair":"\ud83d\ude00","nul":"a\u0000b","nul":"second"})");
    ASSERT_TRUE(doc);
    EXPECT_EQ((*doc)["big"].floating(), 123456789012345678901234.0);
    EXPECT_EQ((*doc)["neg"].floating(), -99999999999999999999.0);
    EXPECT_EQ((*doc)["huge"].string(), "inf");
    EXPECT_EQ((*doc)["tiny"].string(), "-inf");
    EXPECT_EQ((*doc)["max"].unsignedInteger(), 18446744073709551615u);
    EXPECT_EQ((*doc)["min"].integer(), INT64_MIN);
    EXPECT_EQ((*doc)["half"].string(), "a\uFFFDb\uFFFD\\ud800");
    EXPECT_EQ((*doc)["pair"].string(), "\U0001F600");
    EXPECT_EQ((*doc)["nul"].string(), std::string_view("a\0b", 3)) << "the first of its name";
    EXPECT_EQ((*doc)["nul"].integer(), 0);
    EXPECT_EQ((*doc)["absent"]["deeper"].kind(), JsonView::Kind::missing);
}

TEST(Json, HandlesKeepTheirDocumentAndDetachedCopiesAreTheSameInLess) {
    const std::string text = R"({"a":[1.0,-0.0,0.1,1e+308,5,18446744073709551615,true,null],"k\"\n":"x\u0000é"})";
    Json part;
    {
        const auto json = Json::parse(text);
        ASSERT_TRUE(json);
        EXPECT_EQ(json->text(), text);
        part = json->at((*json)["a"]);
    }
    for (int i = 0; i < 100; ++i) ASSERT_TRUE(Json::parse("[" + std::string(200, ' ') + "\"overwritten\"]"));
    const Json copy = part.detached();
    EXPECT_EQ(part.text(), "[1.0,-0.0,0.1,1e+308,5,18446744073709551615,true,null]");
    EXPECT_EQ(copy.text(), part.text());
    EXPECT_LT(copy.documentBytes(), part.documentBytes());
    EXPECT_EQ(Json().detached().kind(), JsonView::Kind::missing);
}

TEST(Json, ALargeDocumentIsReadOnOneThreadAndDroppedOnAnother) {
    std::string text = "[";
    for (int i = 0; i < 200'000; ++i) text += std::to_string(i) + ",";
    text += "0]";
    auto json = Json::parse(text);
    ASSERT_TRUE(json);
    std::thread reader([copy = *json] {
        std::int64_t sum = 0;
        for (const JsonView item : copy.items()) sum += item.integer();
        EXPECT_EQ(sum, 19'999'900'000);
    });
    json.reset();
    reader.join();
    std::promise<std::thread::id> freed;  // the queue is in order, so this one comes after the document
    freeLater([&freed] { freed.set_value(std::this_thread::get_id()); });
    EXPECT_NE(freed.get_future().get(), std::this_thread::get_id());
}

}  // namespace
}  // namespace vmr
