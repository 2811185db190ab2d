// Export: each kind and format to another machine's place and within the machine, onto empty
// targets, existing families and existing lookup tables, against the files and bytes there after.
#include "DirectorySnapshot.h"
#include "InstallationFixture.h"
#include "exchange/ExportFile.h"
#include "exchange/ExportOk.h"

#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

const QString Parts = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\");
const char* const Other = "E:\\Out\\";
const char* const Same = "C:\\Jobs\\PUNCH1\\Kestrova\\";

class Export : public ::testing::Test {
protected:
    void SetUp() override {
        fx.Load();
        fx.Write(Parts + "MY PART 12.prg", "%\r\nM\r\n%\r\n");
        fx.MakeDir(Other);
    }
    InstallationFixture fx;
};

} // namespace

TEST_F(Export, EachKindAndFormatLeavesExactlyTheseFilesInTheTarget) {
    const struct {
        const char* what;
        int mode;
        bool lookup, eight;
        const char* target;
        const char* name;
        const char* newName;
        const char* extension;
        QList<QPair<const char*, const char*>> existing;
        Answer answer;
        int result;
        QStringList changes;
    } cases[] = {
        // clang-format off
        {"drawings leave their program members behind", 1, false, false, Other, "X", "X", "prg", {}, Answer::No, 1,
         {"+X.drw=X drw|", "+X.dxf=X dxf|", "+X.nst=X nst|"}},
        {"within the machine usr and seq follow the drawing", 1, false, false, Same, "X", "X", "prg", {}, Answer::No,
         1, {"+X.drw=X drw|", "+X.dxf=X dxf|", "+X.nst=X nst|", "+X.seq=X seq|", "+X.usr=X usr|"}},
        {"programs: the text alone under the chosen extension", 2, false, false, Other, "X", "X", "nc", {},
         Answer::No, 1, {"+X.nc=X prg|"}},
        {"both kinds: set-up sheet and machine files stay on the machine", 3, false, false, Other, "X", "X", "nc", {},
         Answer::No, 1,
         {"+X=X without extension|", "+X.drw=X drw|", "+X.dxf=X dxf|", "+X.inf=X inf|", "+X.nst=X nst|", "+X.prg=X prg|", "+X.rpt=X rpt|"}},
        {"both kinds within the machine: everything", 3, false, false, Same, "X", "X", "nc", {}, Answer::No, 1,
         {"+X=X without extension|", "+X.drw=X drw|", "+X.dxf=X dxf|", "+X.inf=X inf|", "+X.nst=X nst|", "+X.prg=X prg|", "+X.rpt=X rpt|", "+X.seq=X seq|", "+X.stp=X stp|", "+X.usr=X usr|"}},
        {"8 Character drops the blanks", 2, false, true, Other, "MY PART 12", "MY PART 12", "nc", {}, Answer::No, 1,
         {"+MYPART12.nc=%|M|%|"}},
        {"8 Character shortens a drawing's new name", 1, false, true, Other, "X", "LONGDRAWING", "prg", {},
         Answer::No, 1, {"+LONGDRAW.drw=X drw|", "+LONGDRAW.dxf=X dxf|", "+LONGDRAW.nst=X nst|"}},
        {"lookup into an empty place: number 1 and a new table", 1, true, false, Other, "X", "X", "prg", {},
         Answer::No, 1, {"+1=X prg|", "+1.inf=X inf|", "+1.rpt=X rpt|", "+Work.lkp=X, 1 |******|"}},
        {"lookup within the machine takes the set-up sheet along", 2, true, false, Same, "X", "X", "prg", {},
         Answer::No, 1, {"+1=X prg|", "+1.inf=X inf|", "+1.rpt=X rpt|", "+1.stp=X stp|", "+Work.lkp=X, 1 |******|"}},
        {"lookup: a new name gets the lowest number no file uses", 2, true, false, Other, "X", "X", "prg",
         {{"1", "a"}, {"2.txt", "b"}, {"Work.lkp", "Cover, 4 \r\n******\r\n"}}, Answer::No, 1,
         {"+3=X prg|", "+3.inf=X inf|", "+3.rpt=X rpt|", "~Work.lkp=Cover, 4 |X, 3 |******|"}},
        {"lookup: a known name keeps its number once confirmed", 2, true, false, Other, "X", "X", "prg",
         {{"5", "old"}, {"5.stp", "old"}, {"Work.lkp", "Cover, 4 \r\nx,5\r\n******\r\n"}}, Answer::Yes, 1,
         {"~5=X prg|", "+5.inf=X inf|", "+5.rpt=X rpt|", "-5.stp", "~Work.lkp=Cover, 4 |X, 5 |******|"}},
        {"lookup: a known name declined", 2, true, false, Other, "X", "X", "prg",
         {{"5", "old"}, {"Work.lkp", "x,5\r\n******\r\n"}}, Answer::No, 0, {}},
        {"an existing drawing declined", 1, false, false, Other, "X", "X", "prg", {{"X.drw", "old"}}, Answer::No, 0,
         {}},
        {"an existing drawing replaced: its usr goes, its program stays", 1, false, false, Other, "X", "X", "prg",
         {{"X.drw", "old"}, {"X.usr", "old"}, {"X.prg", "old"}}, Answer::Yes, 1,
         {"~X.drw=X drw|", "+X.dxf=X dxf|", "+X.nst=X nst|", "-X.usr"}},
        {"an existing program replaced with its companions", 2, false, false, Other, "X", "X", "nc",
         {{"X.nc", "old"}, {"X.inf", "old"}}, Answer::Yes, 1, {"-X.inf", "~X.nc=X prg|"}},
        {"an existing family of both kinds declined", 3, false, false, Other, "X", "X", "nc", {{"X.prg", "old"}},
         Answer::No, 0, {}},
        // clang-format on
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const QString target = QString::fromLatin1(c.target);
        fx.Remove(target);
        fx.MakeDir(target);
        if (target == QLatin1String(Same))
            fx.WriteLines(target + "Sample.prg", {"%", "M30", "%"});
        for (const auto& [name, content] : c.existing)
            fx.Write(target + QLatin1String(name), content);
        const auto sourceBefore = TreeContents(fx.Host(Parts));
        const auto before = TreeContents(fx.Host(target));
        fx.Messages().Clear();
        // A question is asked when the case declines or confirms one.
        const bool asks = c.result == 0 || c.answer == Answer::Yes;
        if (asks)
            fx.Messages().Script({c.answer});

        EXPECT_EQ(ExportFile(fx.session(), Parts, c.name, target, c.newName, c.mode, c.lookup, c.eight,
                             c.extension),
                  c.result);
        EXPECT_EQ(Changes(before, TreeContents(fx.Host(target))), c.changes);
        EXPECT_EQ(TreeContents(fx.Host(Parts)), sourceBefore) << "the source is never touched";
        EXPECT_EQ(fx.Messages().Texts().size(), asks ? 1 : 0) << "one question, only when asked";
        EXPECT_FALSE(fx.OnDisk("C:\\Kestrova\\V3Temp.lkp"));
    }
}

TEST_F(Export, FirstFreeNumberSkipsEveryNumberAFileUses) {
    const struct {
        QStringList files;
        int expected;
    } cases[] = {
        // clang-format off
        {{}, 1},
        {{"1"}, 2},
        {{"1.inf", "2.prg", "4"}, 3},
        {{"10", "1x", "01"}, 1},
        {{"1", "2", "3"}, 4},
        // clang-format on
    };
    for (const auto& c : cases) {
        fx.Remove(Other);
        fx.MakeDir(Other);
        for (const QString& f : c.files)
            fx.Write(Other + f, "x");
        EXPECT_EQ(FirstFreeNumber(fx.Files(), Other), c.expected) << c.files.join(',').toStdString();
    }
    EXPECT_EQ(EightCharName("MY PART 12"), "MYPART12");
    EXPECT_EQ(EightCharName("  A B  "), "AB");
    EXPECT_EQ(EightCharName("SHORT"), "SHORT");
}

// A name with characters of bytes 0x80..0x9F stands in the lookup table as those bytes, so that
// the name read back from the table is the name of the data directory again.
TEST_F(Export, HighCharacterNamesMatchTheirLookupEntryAndShortenByCharacters) {
    const QString known = QStringLiteral("\u017D1 \u20AC");
    const QString fresh = QStringLiteral("\u0160\u017E");
    fx.Write(Parts + known + ".prg", "%\r\n\x80\r\n%\r\n");
    fx.Write(Parts + fresh + ".prg", "%\r\n\x9F\r\n%\r\n");
    fx.Write(Other + QStringLiteral("Work.lkp"), "\x8E"
                                                 "1 \x80, 4 \r\n******\r\n");
    fx.Messages().Script({Answer::Yes});
    EXPECT_EQ(ExportFile(fx.session(), Parts, known, Other, known, 2, true, false, "prg"), 1);
    EXPECT_EQ(fx.Messages().Texts().size(), 1) << "the known name is asked about";
    EXPECT_EQ(fx.Read(Other + QStringLiteral("4")), "%\r\n\x80\r\n%\r\n");
    EXPECT_EQ(ExportFile(fx.session(), Parts, fresh, Other, fresh, 2, true, false, "prg"), 1);
    EXPECT_EQ(fx.Read(Other + QStringLiteral("Work.lkp")), "\x8E"
                                                           "1 \x80, 4 \r\n\x8A\x9E, 1 \r\n******\r\n");
    EXPECT_EQ(EightCharName(QStringLiteral("\u017D1 \u20AC \u0160\u017E\u0178 LONG")),
              QStringLiteral("\u017D1\u20AC\u0160\u017E\u0178LO"));
}

TEST_F(Export, OkChecksTheChoiceAsksOnceAndReportsTheCount) {
    const struct {
        const char* what;
        ExportRequest request;
        Answer answer;
        ExportOutcome outcome;
        QStringList log;
        QStringList written;
    } cases[] = {
        // clang-format off
        {"one-file list with nothing chosen", {{}, true, "X", Other, 2, ExportFormat::Normal, "nc"}, Answer::Yes,
         ExportOutcome::Stay, {"No File Selected !"}, {}},
        {"a new name that is empty", {{"X"}, true, "  ", Other, 2, ExportFormat::Normal, "nc"}, Answer::Yes,
         ExportOutcome::FocusName, {"Invalid Filename !"}, {}},
        {"a new name longer than 8 with 8 Character",
         {{"X"}, true, "NINECHARS", Other, 2, ExportFormat::EightCharacter, "nc"}, Answer::Yes,
         ExportOutcome::FocusName, {"Invalid Filename !"}, {}},
        {"a new name that would leave the folder", {{"X"}, true, "..", Other, 2, ExportFormat::Normal, "nc"},
         Answer::Yes, ExportOutcome::FocusName, {"Invalid Filename !"}, {}},
        {"a new name with a separator", {{"X"}, true, "a\\b", Other, 2, ExportFormat::Normal, "nc"}, Answer::Yes,
         ExportOutcome::FocusName, {"Invalid Filename !"}, {}},
        {"several-file list with nothing chosen", {{}, false, {}, Other, 2, ExportFormat::Normal, "nc"}, Answer::Yes,
         ExportOutcome::Stay, {"No Files Selected !"}, {}},
        {"one file declined", {{"X"}, true, "NEW", Other, 2, ExportFormat::Normal, "nc"}, Answer::No,
         ExportOutcome::Stay, {"Export \"X\"\nTo \"E:\\Out\\\" ?"}, {}},
        {"one file under a new name of 40 characters",
         {{"X"}, true, "A-NAME-OF-FORTY-CHARACTERS-FOR-THE-SHOP", "E:\\Out", 2, ExportFormat::Normal, " nc "},
         Answer::Yes, ExportOutcome::Exported, {"Export \"X\"\nTo \"E:\\Out\\\" ?", "1 File Exported !"},
         {"A-NAME-OF-FORTY-CHARACTERS-FOR-THE-SHOP.nc"}},
        {"two files", {{"Cover", "X"}, false, {}, Other, 2, ExportFormat::Normal, "nc"}, Answer::Yes,
         ExportOutcome::Exported, {"Export 2 Files\nTo \"E:\\Out\\\" ?", "2 Files Exported !"}, {"Cover.nc", "X.nc"}},
        {"a target drive that is not ready", {{"X"}, false, {}, "G:\\", 2, ExportFormat::Normal, "nc"}, Answer::Yes,
         ExportOutcome::FocusDrive, {"Export 1 Files\nTo \"G:\\\" ?", "<beep>", "Disc Not Ready !"}, {}},
        // clang-format on
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        fx.Remove(Other);
        fx.MakeDir(Other);
        fx.Messages().Clear();
        if (!c.log.isEmpty() && c.log.first().endsWith(" ?"))
            fx.Messages().Script({c.answer});
        EXPECT_EQ(ExportOk_Click(fx.session(), c.request), c.outcome);
        EXPECT_EQ(fx.Messages().Log(), c.log);
        EXPECT_EQ(QDir(fx.Host(Other)).entryList(QDir::Files, QDir::Name), c.written);
    }
    EXPECT_EQ(fx.ReadLines("C:\\Kestrova\\Setup\\Data\\PUNCH1.xpt"),
              (QStringList{"0", "nc", "2", "2", "E:\\Out\\", "******"}))
        << "the last export's choice is kept for the next time";
}
