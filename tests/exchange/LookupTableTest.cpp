// "Work.lkp": how its lines are read and matched, and its rewrite through "V3Temp.lkp".
#include "exchange/LookupTable.h"

#include "FaultInjector.h"
#include "InstallationFixture.h"
#include "Thrown.h"

#include <QDir>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

TEST(LookupTable, LinesAreReadUpToTheEndMarkerAndMatchOnlyWithANumber) {
    const struct {
        const char* line;
        const char* name;
        int number;
        bool matchesPart;
    } cases[] = {
        // clang-format off
        {"PART, 5 ", "PART", 5, true},
        {"  part ,12", "part", 12, true},
        {"PART,0", "PART", 0, false},
        {"PART,-3", "PART", -3, false},
        {"PART", "", 0, false},
        {"PART,abc", "PART", 0, false},
        {"PART, 7x", "PART", 7, true},
        {"PART,99999", "PART", 0, false},
        {"A,B,3", "A", 0, false},
        {"PARTS, 4 ", "PARTS", 4, false},
        // clang-format on
    };
    for (const auto& c : cases) {
        const QList<LookupLine> lines = ParseLookupTable(QByteArray(c.line) + "\r\n******\r\n");
        ASSERT_EQ(lines.size(), 1) << c.line;
        EXPECT_EQ(lines.first().text, QString::fromLatin1(c.line));
        EXPECT_EQ(lines.first().name, QString::fromLatin1(c.name)) << c.line;
        EXPECT_EQ(lines.first().number, c.number) << c.line;
        EXPECT_EQ(lines.first().Matches("Part"), c.matchesPart) << c.line;
    }
    const QList<LookupLine> mixed = ParseLookupTable("A, 1 \nB, 2 \r  ****** \r\nC, 3 \r\n");
    ASSERT_EQ(mixed.size(), 2) << "nothing after the end marker is read";
    EXPECT_EQ(FindLookupEntry(mixed, "b"), 1);
    EXPECT_EQ(FindLookupEntry(mixed, "C"), -1);
    EXPECT_EQ(LookupEntryLine("Bracket", 12), "Bracket, 12 ");
}

class LookupRewrite : public ::testing::Test {
protected:
    void SetUp() override {
        fx.Load();
        fx.Write("E:\\Out\\Work.lkp", "Cover, 1 \r\n; kept as it is\r\nBracket, 2 \r\n******\r\n");
    }
    void Rewrite(const QString& name, int number) {
        const QList<LookupLine> lines = ReadLookupTable(fx.Files(), "E:\\Out\\");
        RewriteLookupTable(fx.Files(), "C:\\Kestrova\\", "E:\\Out\\", lines, FindLookupEntry(lines, name),
                           LookupEntryLine(name, number));
    }
    InstallationFixture fx;
};

TEST_F(LookupRewrite, AMatchedEntryIsReplacedInPlaceAndANewOneAddedAtTheEnd) {
    Rewrite("BRACKET", 2);
    EXPECT_EQ(fx.Read("E:\\Out\\Work.lkp"), "Cover, 1 \r\n; kept as it is\r\nBRACKET, 2 \r\n******\r\n");
    Rewrite("Flange", 3);
    EXPECT_EQ(fx.Read("E:\\Out\\Work.lkp"),
              "Cover, 1 \r\n; kept as it is\r\nBRACKET, 2 \r\nFlange, 3 \r\n******\r\n");
    EXPECT_FALSE(fx.OnDisk("C:\\Kestrova\\V3Temp.lkp")) << "the temporary table is removed";
}

TEST_F(LookupRewrite, AFaultAtAnyStepKeepsTheOldTableOrTheWholeNewOne) {
    // The new table goes to "V3Temp.lkp", is copied over "Work.lkp" and the temporary file is
    // deleted. A fault at any step leaves the old table in place or the new one complete, the
    // error names the file and the reason (and where the new table is when it could not be put in
    // place), and the next rewrite goes through with every entry the table had.
    const QByteArray old = "Cover, 1 \r\n; kept as it is\r\nBracket, 2 \r\n******\r\n";
    const QByteArray fresh = "Cover, 1 \r\n; kept as it is\r\nBracket, 2 \r\nFlange, 3 \r\n******\r\n";
    const QString table = "E:\\Out\\Work.lkp";
    const QString temp = "C:\\Kestrova\\V3Temp.lkp";
    enum class Temp { Any, New };
    const struct {
        FileStep step;
        const char* file;
        bool tableIsNew;
        Temp temp;
    } cases[] = {
        {FileStep::Open, "V3Temp.lkp", false, Temp::Any},  {FileStep::Write, "V3Temp.lkp", false, Temp::Any},
        {FileStep::Close, "V3Temp.lkp", false, Temp::Any}, {FileStep::Read, "V3Temp.lkp", false, Temp::New},
        {FileStep::Open, "Work.lkp", false, Temp::New},    {FileStep::Write, "Work.lkp", false, Temp::New},
        {FileStep::Close, "Work.lkp", false, Temp::New},   {FileStep::Sync, "Work.lkp", false, Temp::New},
        {FileStep::Replace, "Work.lkp", false, Temp::New}, {FileStep::Delete, "V3Temp.lkp", true, Temp::New},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << "step " << int(c.step) << " on " << c.file);
        fx.Write(table, old);
        const QList<LookupLine> lines = ReadLookupTable(fx.Files(), "E:\\Out\\");
        {
            FaultInjector faults(fx.Files());
            faults.Fail(c.step, QLatin1String(c.file), ENOSPC);
            const auto error = Thrown<SystemError>([&] {
                RewriteLookupTable(fx.Files(), "C:\\Kestrova\\", "E:\\Out\\", lines, -1,
                                   LookupEntryLine("Flange", 3));
            });
            ASSERT_TRUE(error) << "the full disk went unnoticed";
            EXPECT_TRUE(error->subject().endsWith(QLatin1String(c.file))) << error->subject().toStdString();
            EXPECT_TRUE(error->text().startsWith("Disk full")) << error->text().toStdString();
            if (c.temp == Temp::New && !c.tableIsNew) {
                EXPECT_TRUE(error->text().contains(temp)) << error->text().toStdString();
            }
            EXPECT_EQ(faults.Fired(), 1);
        }
        EXPECT_EQ(fx.Read(table), c.tableIsNew ? fresh : old);
        if (c.temp == Temp::New) {
            EXPECT_EQ(fx.Read(temp), fresh);
        }
        EXPECT_EQ(QDir(fx.Host("E:\\Out")).entryList(QDir::Files | QDir::Hidden), QStringList{"Work.lkp"})
            << "nothing half written beside the table";

        Rewrite("Gusset", 4);
        EXPECT_TRUE(fx.Read(table).startsWith("Cover, 1 \r\n; kept as it is\r\nBracket, 2 \r\n"));
        EXPECT_TRUE(fx.Read(table).endsWith("Gusset, 4 \r\n******\r\n"));
        EXPECT_FALSE(fx.OnDisk(temp));
    }
}
