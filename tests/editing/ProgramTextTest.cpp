#include "editing/ProgramText.h"

#include "FaultInjector.h"
#include "InstallationFixture.h"
#include "Thrown.h"
#include "editing/ProgramLines.h"

#include <functional>
#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::FaultInjector;
using kestrova::testing::InstallationFixture;
using kestrova::testing::Thrown;
using kestrova::testing::ThrownText;

namespace {

struct LineCase {
    const char* in;
    const char* out;
};

QByteArray Stripped(const char* line) {
    QByteArray out("kept:"); // what the output already holds stays in front
    StripLine(line, out);
    return out.mid(5);
}

TEST(ProgramLinesTest, StripRemovesAnyRunOfNAndDigitsAfterABlockDelete) {
    const LineCase cases[] = {
        {"N0010 G01 X5", "G01 X5"},
        {"/N0010 G01 X5", "/G01 X5"},
        {"/ N10  G00 ", "/G00"},
        {"N10N20G01", "G01"},
        {"n0050 X1", "X1"},
        {"nN5n G1", "G1"},
        {"N100", ""},
        {"", ""},
        {"   ", ""},
        {"%", "%"},
        {"O1234", "O1234"},
        {"  G01 X1  ", "G01 X1"},
        {"\tN10 G01", "\tN10 G01"},
        {"N10\tG01", "\tG01"},
        {"/", "/"},
        {"G01 N10", "G01 N10"},
        {"NX10", "X10"},
    };
    for (const LineCase& c : cases)
        EXPECT_EQ(Stripped(c.in), QByteArray(c.out)) << c.in;
}

TEST(ProgramLinesTest, NumberingRemovesOnlyAnUpperCaseOldNumber) {
    struct Case {
        int width;
        const char* in;
        const char* out;
    };
    const Case cases[] = {
        {4, "N5 G90", "N0010 G90"},  {4, "n10 G01", "N0010 n10 G01"},
        {0, "/N5 G00", "/N10 G00"},  {0, "G01 X10", "N10 G01 X10"},
        {4, "", "N0010 "},           {4, "  %  ", "N0010 %"},
        {0, "N10N20G01", "N10 G01"}, {0, "Nn10 X1", "N10 n10 X1"},
        {0, "/ n5", "/N10 n5"},      {1, "N", "N10 "},
        {0, "\tG01", "N10 \tG01"},   {6, "N7", "N000010 "},
        {3, "G00", "N010 G00"},      {2, "G00", "N10 G00"},
    };
    for (const Case& c : cases) {
        QByteArray out;
        BlockNumbers(10, 5, c.width).Number(c.in, out);
        EXPECT_EQ(out, QByteArray(c.out)) << c.in;
    }
}

TEST(ProgramLinesTest, WidthsAndTheBlankRules) {
    const std::pair<const char*, int> widths[] = {{"0010", 4}, {"10", 0}, {"0", 1}, {" 007 ", 3}, {"", 0}};
    for (const auto& [text, width] : widths)
        EXPECT_EQ(NumberWidth(QString::fromLatin1(text)), width) << text;
    for (const auto& [in, expected] :
         {std::pair{"  G01 X 10  Y5 ", "G01X10Y5"}, {"G01\tX1 ", "G01\tX1"}, {"   ", ""}}) {
        QByteArray out("%");
        RemoveAllSpaces(in, out);
        EXPECT_EQ(out, QByteArray("%") + expected) << in;
    }
    // A number longer than the width is never cut; advancing past 32767 is an overflow.
    BlockNumbers numbers(32760, 7, 2);
    EXPECT_EQ(numbers.NWord(), QByteArray("N32760 "));
    numbers.Advance();
    EXPECT_EQ(numbers.NWord(), QByteArray("N32767 "));
    EXPECT_THROW(numbers.Advance(), OverflowError);
}

class ProgramTextTest : public ::testing::Test {
protected:
    void SetUp() override { fixture.Load(); }
    QString Temp(const char* name) const { return QStringLiteral("C:\\Kestrova\\") + QLatin1String(name); }

    const QString program = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\Job.prg");
    InstallationFixture fixture;
};

TEST_F(ProgramTextTest, WholeFilesWithMixedLineEnds) {
    enum class Op { Renumber0010By10, Renumber5By5, Strip, Spaces };
    struct Case {
        Op op;
        QByteArray in;
        QByteArray out;
    };
    const Case cases[] = {
        {Op::Renumber0010By10, "\r\n%\r\nN5 G90\n\r\nG01 X1\r%",
         "%\r\nN0010 G90\r\nN0020 \r\nN0030 G01 X1\r\nN0040 %\r\n"},
        {Op::Renumber0010By10, "  \r\n\r\nG01 X1\r\n", "N0010 G01 X1\r\n"},
        {Op::Renumber0010By10, "", "N0010 \r\n"},
        {Op::Renumber0010By10, " \r\n\n", "N0010 \r\n"},
        {Op::Renumber0010By10, "o1234\nG01", "o1234\r\nN0010 G01\r\n"},
        {Op::Renumber0010By10, "G01\n%\n", "N0010 G01\r\nN0020 %\r\n"},
        {Op::Renumber5By5, "N1\nN2\nN3", "N5 \r\nN10 \r\nN15 \r\n"},
        {Op::Strip, "%\r\n\r\nN10 G01\n/N0020 X5\rn30\r\n%", "%\r\n\r\nG01\r\n/X5\r\n\r\n%\r\n"},
        {Op::Strip, "", ""},
        {Op::Spaces, "  G01 X 10  Y5 \r\n   \r\n\r\nM30\tX", "G01X10Y5\r\nM30\tX\r\n"},
        {Op::Spaces, " \n \n", ""},
        // Bytes 0x80..0xA0 are program text like any other: never converted, and no blank.
        {Op::Renumber5By5, "G01 \x80\x8A\x9E\xA0\r\n\x85", "N5 G01 \x80\x8A\x9E\xA0\r\nN10 \x85\r\n"},
        {Op::Strip, "N10 \x80\x9F\r\n", "\x80\x9F\r\n"},
        {Op::Spaces, " \x85 X\xA0 \x9F ", "\x85X\xA0\x9F\r\n"},
    };
    for (const Case& c : cases) {
        fixture.Write(program, c.in);
        switch (c.op) {
        case Op::Renumber0010By10:
            RenumberProgram(fixture.session(), program, 10, 10, 4);
            break;
        case Op::Renumber5By5:
            RenumberProgram(fixture.session(), program, 5, 5, 0);
            break;
        case Op::Strip:
            StripNumbers(fixture.session(), program);
            break;
        case Op::Spaces:
            RemoveSpaces(fixture.session(), program);
            break;
        }
        EXPECT_EQ(fixture.Read(program), c.out) << c.in.toStdString();
    }
    for (const char* temp : {"Renumber.tmp", "Numbers.tmp", "Spaces.tmp"})
        EXPECT_FALSE(fixture.OnDisk(Temp(temp))) << temp;
}

TEST_F(ProgramTextTest, AnOverflowInTheMiddleLeavesTheProgramAsItWas) {
    const QByteArray original("%\r\nG01 X1\r\nG01 X2\r\nG01 X3\r\n%\r\n");
    fixture.Write(program, original);
    const auto error =
        Thrown<RewriteError>([&] { RenumberProgram(fixture.session(), program, 32760, 5, 0); });
    ASSERT_TRUE(error) << "no overflow";
    EXPECT_EQ(error->kind(), SystemError::Kind::Overflow);
    EXPECT_EQ(error->text(),
              QStringLiteral("Overflow: \"C:\\Jobs\\PUNCH1\\Parts\\Job.prg\"\n"
                             "The Program \"C:\\Jobs\\PUNCH1\\Parts\\Job.prg\" Is Unchanged !"));
    EXPECT_EQ(fixture.Read(program), original);
}

TEST_F(ProgramTextTest, ARewriteThatCannotFinishLosesNothing) {
    // Each of the three rewrites, with a fault at each step of its two files: the new text
    // written to the temporary file, forced to the disk and put in the program's place.
    // Afterwards the program is as it was, its whole new text in the temporary file once that is
    // complete; the one error says which, and the next rewrite of the program succeeds.
    struct Rewrite {
        const char* temporary;
        std::function<void(Session&, const QString&)> run;
    };
    const Rewrite rewrites[] = {
        {"Renumber.tmp", [](Session& s, const QString& p) { RenumberProgram(s, p, 1, 1, 0); }},
        {"Numbers.tmp", [](Session& s, const QString& p) { StripNumbers(s, p); }},
        {"Spaces.tmp", [](Session& s, const QString& p) { RemoveSpaces(s, p); }},
    };
    enum class After { AsItWas, NewTextKept };
    struct Case {
        FileStep step;
        bool onTemporary; // the step meets the temporary file, else the program
        After after;
        const char* where;
    };
    const Case cases[] = {
        {FileStep::Open, true, After::AsItWas, "Unchanged"},
        {FileStep::Write, true, After::AsItWas, "Unchanged"},
        {FileStep::Close, true, After::AsItWas, "Unchanged"},
        {FileStep::Read, false, After::AsItWas, "Unchanged"},
        {FileStep::Sync, true, After::NewTextKept, "Is In \"C:\\Kestrova\\"},
        {FileStep::Replace, false, After::NewTextKept, "Is In \"C:\\Kestrova\\"},
    };
    // Large enough for the new text to go to the disk in several writes.
    QByteArray original;
    for (int i = 0; i < 30000; ++i)
        original += "N" + QByteArray::number(i) + " G01 X " + QByteArray::number(i) + "\r\n";
    const QString reference = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\Reference.prg");
    for (const Rewrite& r : rewrites) {
        fixture.Write(reference, original);
        r.run(fixture.session(), reference);
        const QByteArray rewritten = fixture.Read(reference);
        ASSERT_NE(rewritten, original) << r.temporary;
        const QString temporary = Temp(r.temporary);
        for (const Case& c : cases) {
            SCOPED_TRACE(::testing::Message() << r.temporary << " step " << int(c.step) << " on "
                                              << (c.onTemporary ? "temporary" : "program"));
            fixture.Write(program, original);
            {
                FaultInjector faults(fixture.Files());
                faults.Fail(c.step, c.onTemporary ? QLatin1String(r.temporary) : QStringLiteral("Job.prg"),
                            ENOSPC, 1);
                // One message: the reason and the file, then where the program's text is.
                const QString error = ThrownText<RewriteError>([&] { r.run(fixture.session(), program); });
                EXPECT_TRUE(error.startsWith(QStringLiteral("Disk full: \""))) << error.toStdString();
                EXPECT_TRUE(error.contains(QLatin1String(c.where))) << error.toStdString();
                EXPECT_EQ(faults.Fired(), 1);
            }
            EXPECT_EQ(fixture.Read(program), original);
            if (c.after == After::NewTextKept) {
                EXPECT_EQ(fixture.Read(temporary), rewritten);
            }
            // Whatever the fault left in the temporary file, the next rewrite goes through.
            r.run(fixture.session(), program);
            EXPECT_EQ(fixture.Read(program), rewritten);
            EXPECT_FALSE(fixture.OnDisk(temporary));
        }
    }
}

TEST_F(ProgramTextTest, ProgressRunsFromNothingToTheWholeProgram) {
    QByteArray text;
    for (int i = 0; i < 200000; ++i)
        text += "G01 X" + QByteArray::number(i) + " Y 5\r\n";
    fixture.Write(program, text);
    QList<qint64> seen;
    RemoveSpaces(fixture.session(), program, [&](qint64 done, qint64 total) {
        EXPECT_EQ(total, text.size());
        seen << done;
    });
    ASSERT_GE(seen.size(), 3);
    EXPECT_EQ(seen.front(), 0);
    EXPECT_EQ(seen.back(), text.size());
    EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
}

} // namespace
