// Import of files and sub-routines: each class of file onto an empty place, an existing family
// and a declined question, against the files and bytes in the data directory after.
#include "DirectorySnapshot.h"
#include "InstallationFixture.h"
#include "exchange/ExportFile.h"
#include "exchange/ImportFile.h"
#include "exchange/ImportOk.h"

#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

const QString Source = QStringLiteral("E:\\In\\");
const QString Kestrova = QStringLiteral("C:\\Jobs\\PUNCH1\\Kestrova\\");

class Import : public ::testing::Test {
protected:
    void SetUp() override {
        fx.Load();
        for (const char* name : {"A.prg", "A.inf", "A.rpt", "A.stp", "B.drw", "B.dxf", "B.prg", "B.usr", "B",
                                 "O1234", "PART.NC", "C.inf", "D.bmp"})
            fx.Write(Source + QLatin1String(name), QByteArray("in ") + name + "\r\n");
        LastImportSource().clear();
    }
    InstallationFixture fx;
};

} // namespace

TEST_F(Import, EachClassOfFileBringsInWhatItShould) {
    const struct {
        const char* what;
        const char* file;
        QList<QPair<const char*, const char*>> existing;
        Answer answer;
        int result;
        QStringList changes;
    } cases[] = {
        // clang-format off
        {"a program brings its information, report and set-up sheet", "A.prg", {}, Answer::No, 1,
         {"+A.inf=in A.inf|", "+A.prg=in A.prg|", "+A.rpt=in A.rpt|", "+A.stp=in A.stp|"}},
        {"a lone information file is only itself", "C.inf", {}, Answer::No, 1, {"+C.inf=in C.inf|"}},
        {"a drawing brings its family without program members", "B.drw", {}, Answer::No, 1,
         {"+B.drw=in B.drw|", "+B.dxf=in B.dxf|", "+B.usr=in B.usr|"}},
        {"a file without extension becomes a program", "O1234", {}, Answer::No, 1, {"+O1234.prg=in O1234|"}},
        {"a foreign extension stays part of the program name", "PART.NC", {}, Answer::No, 1,
         {"+PART.NC.prg=in PART.NC|"}},
        {"a picture is a single file", "D.bmp", {}, Answer::No, 1, {"+D.bmp=in D.bmp|"}},
        {"an existing program declined stays as it was", "A.prg", {{"A.prg", "old"}, {"A.inf", "old"}}, Answer::No, 0,
         {}},
        {"an existing program replaced: its old companions go first", "A.prg", {{"A.prg", "old"}, {"A.seq", "old"}},
         Answer::Yes, 1, {"+A.inf=in A.inf|", "~A.prg=in A.prg|", "+A.rpt=in A.rpt|", "+A.stp=in A.stp|"}},
        {"an existing drawing replaced keeps its program", "B.drw",
         {{"B.drw", "old"}, {"B.prg", "old"}, {"B.seq", "old"}}, Answer::Yes, 1,
         {"~B.drw=in B.drw|", "+B.dxf=in B.dxf|", "-B.seq", "+B.usr=in B.usr|"}},
        {"an existing single file declined", "C.inf", {{"C.inf", "old"}}, Answer::No, 0, {}},
        {"an existing single file replaced", "C.inf", {{"C.inf", "old"}}, Answer::Yes, 1, {"~C.inf=in C.inf|"}},
        {"an existing foreign program replaced with its companions", "O1234",
         {{"O1234.prg", "old"}, {"O1234.rpt", "old"}}, Answer::Yes, 1, {"~O1234.prg=in O1234|", "-O1234.rpt"}},
        // clang-format on
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        fx.Remove(Kestrova);
        fx.MakeDir(Kestrova);
        for (const auto& [name, content] : c.existing)
            fx.Write(Kestrova + QLatin1String(name), content);
        const auto sourceBefore = TreeContents(fx.Host(Source));
        const auto before = TreeContents(fx.Host(Kestrova));
        fx.Messages().Clear();
        // A question is asked when the case declines or confirms one.
        const bool asks = c.result == 0 || c.answer == Answer::Yes;
        if (asks)
            fx.Messages().Script({c.answer});
        EXPECT_EQ(ImportFile(fx.session(), Source, Kestrova, c.file), c.result);
        EXPECT_EQ(Changes(before, TreeContents(fx.Host(Kestrova))), c.changes);
        EXPECT_EQ(TreeContents(fx.Host(Source)), sourceBefore);
        EXPECT_EQ(fx.Messages().Texts().size(), asks ? 1 : 0);
    }
}

TEST_F(Import, OkAsksOnceChecksTheDrivesAndReportsTheCount) {
    fx.Write("C:\\Jobs\\PUNCH1\\Kestrova\\A.prg", "old");
    const struct {
        const char* what;
        ImportRequest request;
        QList<Answer> answers;
        ImportOutcome outcome;
        QStringList log;
        const char* currentDir;
    } cases[] = {
        // clang-format off
        {"no files chosen", {1, "Kestrova", "E:\\In", {}}, {}, ImportOutcome::Stay, {"No Files Selected !"},
         "Kestrova"},
        {"an empty target", {1, " ", "E:\\In", {"A.prg"}}, {}, ImportOutcome::FocusTarget,
         {"No Target Directory Selected !"}, "Kestrova"},
        {"a target drive that is not ready", {2, "G:", "E:\\In", {"A.prg"}}, {}, ImportOutcome::FocusTarget,
         {"<beep>", "Target Disk Not Ready !"}, "Kestrova"},
        {"a source drive that is not ready", {1, "Parts", "G:\\In", {"A.prg"}}, {Answer::Yes},
         ImportOutcome::FocusDrive, {"Import \"A.prg\"\nTo \"Parts\" ?", "<beep>", "Disc Not Ready !"}, "Parts"},
        {"two files, one of them declined", {1, "Kestrova", "E:\\In\\", {"A.prg", "C.inf"}},
         {Answer::Yes, Answer::No}, ImportOutcome::Done,
         {"Import 2 Files\nTo \"Kestrova\" ?", "\"A\" Already Exists !\n\nOverwrite It ?", "1 File Imported !"},
         "Kestrova"},
        {"a mode that imports nothing", {3, "Kestrova", "E:\\In", {"A.prg"}}, {}, ImportOutcome::Stay, {},
         "Kestrova"},
        // clang-format on
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        fx.Messages().Clear();
        for (Answer a : c.answers)
            fx.Messages().Script({a});
        EXPECT_EQ(ImportOk_Click(fx.session(), c.request), c.outcome);
        EXPECT_EQ(fx.Messages().Log(), c.log);
        EXPECT_EQ(fx.Settings().CurrentDir, QString::fromLatin1(c.currentDir));
    }
    EXPECT_EQ(fx.Read("C:\\Jobs\\PUNCH1\\Kestrova\\A.prg"), "old");
    EXPECT_EQ(fx.Read("C:\\Jobs\\PUNCH1\\Kestrova\\C.inf"), "in C.inf\r\n");
    EXPECT_EQ(LastImportSource(), "E:\\In\\") << "offered when the form opens again";
}

TEST_F(Import, SubRoutinesGoToTheSubRoutineDirectory) {
    const QString subs = fx.Settings().RevSubsPath;
    ASSERT_FALSE(subs.isEmpty());
    fx.Write(subs + "C.inf", "old sub");
    fx.Messages().Script({Answer::Yes, Answer::No});
    EXPECT_EQ(ImportOk_Click(fx.session(), {5, "Parts", "E:\\In", {"A.prg", "C.inf"}}), ImportOutcome::Done);
    EXPECT_EQ(fx.Messages().Texts(),
              (QStringList{"Import 2 Sub-Routines ?", "\"C.inf\" Already Exists !\n\nOverwrite It ?",
                           "1 Sub-Routine Imported !"}));
    EXPECT_EQ(fx.Read(subs + "A.prg"), "in A.prg\r\n");
    EXPECT_EQ(fx.Read(subs + "C.inf"), "old sub");
    EXPECT_FALSE(fx.OnDisk(subs + "A.inf")) << "a sub-routine comes alone";

    fx.Messages().Clear();
    EXPECT_EQ(ImportOk_Click(fx.session(), {5, "Parts", "E:\\In", {}}), ImportOutcome::Stay);
    EXPECT_EQ(fx.Messages().Texts(), (QStringList{"No Sub-Routines Selected !"}));
}

TEST(ImportClasses, ExtensionsAreComparedInLowerCase) {
    const struct {
        const char* file;
        ImportClass expected;
    } cases[] = {
        // clang-format off
        {"a.DRW", ImportClass::Drawing},
        {"a.Prg", ImportClass::Program},
        {"a.dxf", ImportClass::SingleFile},
        {"a.STP", ImportClass::SingleFile},
        {"a.nc", ImportClass::ForeignProgram},
        {"a", ImportClass::ForeignProgram},
        {"a.html", ImportClass::ForeignProgram},
        // clang-format on
    };
    for (const auto& c : cases)
        EXPECT_EQ(ClassOfImport(c.file), c.expected) << c.file;
}

TEST_F(Import, NothingIsImportedOrExportedOntoItself) {
    const QString parts = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\");
    const auto before = TreeContents(fx.Host(parts));
    EXPECT_EQ(ImportFile(fx.session(), parts, "c:\\jobs\\punch1\\PARTS\\", "Cover.prg"), 0);
    EXPECT_EQ(ImportFile(fx.session(), parts, parts, "X.drw"), 0);
    for (int mode : {1, 2, 3})
        EXPECT_EQ(ExportFile(fx.session(), parts, "X", parts, "x", mode, false, false, "prg"), 0) << mode;
    EXPECT_EQ(TreeContents(fx.Host(parts)), before) << "the family would have been deleted before its copy";
    EXPECT_TRUE(fx.Messages().Log().isEmpty());
}
