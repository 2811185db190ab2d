#include "filestore/FileSearch.h"

#include "InstallationFixture.h"

#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::InstallationFixture;

namespace kestrova {
void PrintTo(const SearchRow& row, std::ostream* os) {
    *os << row.name.toStdString() << " in " << row.directory.toStdString();
}
} // namespace kestrova

namespace {

class FileSearch : public ::testing::Test {
protected:
    void SetUp() override {
        fx.Load();
        fx.Write("C:\\Jobs\\PUNCH1\\Parts\\XAB1.prg", "%");
        fx.Write("C:\\Jobs\\PUNCH1\\Kestrova\\ab.drw", "d");
        fx.Write("C:\\Jobs\\PUNCH1\\Archive\\a*b.prg", "%");
        fx.Write("C:\\Jobs\\PUNCH1\\Archive\\a?b.prg", "%");
        fx.Write("C:\\Jobs\\PUNCH1\\EXSUBS\\ab.prg", "%");
        fx.Write("C:\\Jobs\\PUNCH1\\exsubs.drw", "a file, not a directory");
    }
    InstallationFixture fx;
};

} // namespace

TEST_F(FileSearch, FindsNamesHoldingTheTextInEveryDataDirectoryButExsubs) {
    struct Case {
        QString text;
        bool drawings;
        bool programs;
        QList<SearchRow> rows;
    };
    const QList<Case> cases{
        {"ab", false, true, {{"XAB1", "Parts"}}},
        {" AB ", true, true, {{"ab", "Kestrova"}, {"XAB1", "Parts"}}},
        {"*", false, true, {{"a*b", "Archive"}}},
        {"a?b", true, true, {{"a?b", "Archive"}}},
        {"x", true, true, {{"X", "Parts"}, {"XAB1", "Parts"}}},
        {"", true, false, {{"Old", "Archive"}, {"ab", "Kestrova"}, {"Bracket", "Parts"}, {"X", "Parts"}}},
        {"zzz", true, true, {}},
        {"", false, false, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text.toStdString());
        EXPECT_EQ(SearchFiles(fx.session(), "PUNCH1", c.text, c.drawings, c.programs), c.rows);
    }
    EXPECT_EQ(SearchFiles(fx.session(), "RAINER", "", false, true),
              (QList<SearchRow>{{"Panel", "Kestrova"}}));
}

// The search form shows the other texts and captions, and the machine each mode searches.
TEST_F(FileSearch, MessagesAndCaptionsFollowTheTextAndKinds) {
    const QString longest(32, u'a');
    EXPECT_EQ(SearchRefusal(longest, true, false), "");
    EXPECT_EQ(SearchRefusal(longest + "a", true, true), "Invalid Search Text");
    EXPECT_EQ(SearchRefusal(" " + longest + " ", true, true), "") << "the text is trimmed first";

    EXPECT_EQ(NothingFoundMessage("", true, false), "No Drawings Found ");
    EXPECT_EQ(NothingFoundMessage("", true, true), "No Drawings Or Programs Found ");
    EXPECT_EQ(SearchTextCaption(""), "");
    EXPECT_EQ(SearchKindCaption(true, false), " Drawings ");
    EXPECT_EQ(SearchKindCaption(false, true), " Programs ");
}
