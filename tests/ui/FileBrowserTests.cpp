// What a person types to choose a file.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "ui/widgets/FileBrowser.h"

namespace vmr::test {
namespace {

TEST(FileBrowser, CompletesResolvesAndTellsWhatIsInTheWay) {
    const QTemporaryDir folder;
    const QDir dir(folder.path());
    ASSERT_TRUE(dir.mkpath("mine/deeper"));
    for (const char* name : {"mine.json", "other.JSON", "other.txt", ".hidden"}) {
        QFile file(dir.filePath(QLatin1String(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    FileBrowser browser;
    browser.setProperty("suffix", ".json");
    browser.show(folder.path() + "/gone/too");
    EXPECT_EQ(browser.folder(), folder.path()) << "the nearest that there is";
    QStringList names;
    for (const QVariant& entry : browser.entries()) names.push_back(entry.toMap().value("name").toString());
    EXPECT_EQ(names, (QStringList{"mine", "mine.json", "other.JSON"}));

    for (const auto& [typed, completed] :
         {std::pair("m", "mine"), {"o", "other."}, {"mine/d", "mine/deeper/"}, {"x", "x"}, {".h", ".hidden"}})
        EXPECT_EQ(browser.completed(typed), QLatin1String(completed)) << typed;
    for (const auto& [typed, saved] : {std::pair("new", "/new.json"),
                                       {"new.txt", "/new.txt"},
                                       {" mine/a ", "/mine/a.json"},
                                       {"mine", "/mine"},
                                       {"mine/../b", "/b.json"}})
        EXPECT_EQ(browser.resolvedToSave(typed), folder.path() + saved) << typed;
    EXPECT_EQ(browser.resolved("~/a"), QDir::homePath() + "/a");

    const auto problem = [&](const char* name, bool saving) { return browser.problem(dir.filePath(name), saving); };
    EXPECT_TRUE(problem("mine.json", false).isEmpty() && problem("new.json", true).isEmpty());
    EXPECT_TRUE(problem("new.json", false).startsWith("There is no file"));
    EXPECT_TRUE(problem("gone/new.json", true).startsWith("There is no folder"));
    EXPECT_TRUE(problem("mine", true).endsWith("is a folder"));
}

}  // namespace
}  // namespace vmr::test
