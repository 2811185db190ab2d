// The comparison of two versions of a program, on pairs written by hand.
#include "editing/ProgramDiff.h"

#include <QStringList>
#include <gtest/gtest.h>

using namespace kestrova;

namespace {

// The rows as "=1:1", "~2:2", "+:3", "-4:" (kind, then the line of each side from 1).
QStringList Marks(const ProgramDiff& diff) {
    QStringList marks;
    for (const DiffRow& row : diff.Rows()) {
        const char* kind = row.change == LineChange::Same      ? "="
                           : row.change == LineChange::Changed ? "~"
                           : row.change == LineChange::Added   ? "+"
                                                               : "-";
        marks << QStringLiteral("%1%2:%3").arg(QLatin1String(kind),
                                               row.older < 0 ? QString() : QString::number(row.older + 1),
                                               row.newer < 0 ? QString() : QString::number(row.newer + 1));
    }
    return marks;
}

} // namespace

TEST(ProgramDiff, HandWrittenPairsGiveTheirMarksAndCounts) {
    const struct {
        const char* what;
        QByteArray older;
        QByteArray newer;
        QStringList marks;
        int changed, added, removed;
    } cases[] = {
        // clang-format off
        {"a line changed", "N10 G90\r\nN20 X1\r\nN30 M30\r\n", "N10 G90\r\nN20 X2\r\nN30 M30\r\n",
         {"=1:1", "~2:2", "=3:3"}, 1, 0, 0},
        {"a line added at the start", "N10\r\nN20\r\n", "%\r\nN10\r\nN20\r\n",
         {"+:1", "=1:2", "=2:3"}, 0, 1, 0},
        {"lines removed at the end", "N10\r\nN20\r\nN30\r\nM30\r\n", "N10\r\nN20\r\n",
         {"=1:1", "=2:2", "-3:", "-4:"}, 0, 0, 2},
        {"CR LF, LF and CR ends are one line end; a last line without one is a line", "N10\r\nN20\nN30\rN40",
         "N10\nN20\r\nN30\r\nN40\r\n", {"=1:1", "=2:2", "=3:3", "=4:4"}, 0, 0, 0},
        {"high bytes compare as bytes", "N10 \xB0\xE9\r\nN20 \xFF\r\n", "N10 \xB0\xE9\r\nN20 \xFE\r\n",
         {"=1:1", "~2:2"}, 1, 0, 0},
        {"a run of two removed and one added pairs one as changed", "A\r\nB\r\nC\r\nD\r\n", "A\r\nX\r\nD\r\n",
         {"=1:1", "~2:2", "-3:", "=4:3"}, 1, 0, 1},
        {"empty against text", "", "N10\r\n", {"+:1"}, 0, 1, 0},
        // clang-format on
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const ProgramDiff diff(c.older, c.newer);
        EXPECT_EQ(Marks(diff), c.marks);
        EXPECT_EQ(diff.Changed(), c.changed);
        EXPECT_EQ(diff.Added(), c.added);
        EXPECT_EQ(diff.Removed(), c.removed);
    }
}

TEST(ProgramDiff, LinesKeepTheirBytesAndChangesAreFoundInOrder) {
    const ProgramDiff diff("N1\r\nN2 \xC4\r\nN3\r\nN4\r\nN5\r\n",
                           "N1\r\nN2 \xC5\r\nN3\r\nN4\r\nN6\r\nN7\r\n");
    EXPECT_EQ(diff.OlderLine(1), QByteArrayView("N2 \xC4"));
    EXPECT_EQ(diff.NewerLine(1), QByteArrayView("N2 \xC5"));
    EXPECT_EQ(diff.ChangeStarts(), (std::vector<int>{1, 4}));
    EXPECT_EQ(diff.Differences(), 3);
}
