// "Work.lkp": how its lines are read and matched, and its rewrite through "V3Temp.lkp".
#include "exchange/LookupTable.h"

#include "FaultInjector.h"
#include "InstallationFixture.h"

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

TEST_F(LookupRewrite, AFailedCopyBackKeepsTheWholeTableInTheTemporaryFile) {
    FaultInjector faults(fx.Files());
    faults.Fail(FileStep::Write, "Work.lkp", ENOSPC);
    try {
        Rewrite("Flange", 3);
        FAIL() << "the full disk is reported";
    } catch (const SystemError& error) {
        EXPECT_TRUE(error.text().contains("C:\\Kestrova\\V3Temp.lkp")) << error.text().toStdString();
    }
    EXPECT_EQ(fx.Read("C:\\Kestrova\\V3Temp.lkp"),
              "Cover, 1 \r\n; kept as it is\r\nBracket, 2 \r\nFlange, 3 \r\n******\r\n");
}
