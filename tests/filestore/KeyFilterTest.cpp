#include "filestore/KeyFilter.h"

#include "RecordingMessageService.h"

#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::RecordingMessageService;

namespace {

// The keys of text that a mode accepts into an empty box one after another.
QString Accepted(int mode, const QString& typed, RecordingMessageService& messages) {
    QString box;
    for (const QChar c : typed)
        if (FilterNameKey(messages, c.unicode(), mode, box, 0) != 0)
            box += c;
    return box;
}

} // namespace

TEST(KeyFilter, NameModesTakeNamesUpToTheirLimit) {
    RecordingMessageService messages;
    EXPECT_EQ(Accepted(-32, QStringLiteral(" Part 1&(2)+-._\\/:*?\"<>|,;x"), messages),
              QStringLiteral("Part 1&(2)+-._x"));
    EXPECT_EQ(messages.Beeps(), 12) << "a leading blank and every forbidden character beep";

    const QString full(32, u'a');
    EXPECT_EQ(FilterNameKey(messages, 'b', -32, full, 0), 0);
    EXPECT_EQ(FilterNameKey(messages, 'b', -32, full, 3), 'b') << "the key replaces the selection";
    EXPECT_EQ(FilterNameKey(messages, ' ', -32, full.left(31), 0), ' ');
    EXPECT_EQ(FilterNameKey(messages, 8, -32, full, 0), 8);
    EXPECT_EQ(FilterNameKey(messages, 13, -1, QString(), 0), 13);

    EXPECT_EQ(Accepted(-322, QStringLiteral("*.prg;P?"), messages), QStringLiteral("*.prgP?"));
    EXPECT_EQ(Accepted(-322, QString(40, u'x'), messages).size(), 36);
    EXPECT_EQ(Accepted(-321, QString(40, u'x'), messages).size(), 36);
    EXPECT_EQ(Accepted(-48, QString(50, u'x'), messages).size(), 48);
    EXPECT_EQ(Accepted(5, QStringLiteral("abcdefg"), messages), QStringLiteral("abcde"));
    EXPECT_EQ(Accepted(-80, QStringLiteral("AB-_9.xyzw"), messages), QStringLiteral("AB-_9xyz"));
    EXPECT_EQ(Accepted(-83, QStringLiteral("PART-1.PRG (2)"), messages), QStringLiteral("PART-1.PRG2"));
}

TEST(KeyFilter, NumberModesTakeTheirOwnCharacters) {
    RecordingMessageService messages;
    const QString keys = QStringLiteral("12-3.4 (5)*+/^Pp xY");
    EXPECT_EQ(Accepted(-1, keys, messages), QStringLiteral("12345"));
    EXPECT_EQ(Accepted(-2, keys, messages), QStringLiteral("12-345"));
    EXPECT_EQ(Accepted(-4, keys, messages), QStringLiteral("123.45"));
    EXPECT_EQ(Accepted(-5, keys, messages), QStringLiteral("12-3.45"));
    EXPECT_EQ(Accepted(-6, keys, messages), QStringLiteral("12-3.4(5)*+/^"));
    EXPECT_EQ(Accepted(-7, keys, messages), QStringLiteral("12-3.4(5)*+/^Pp"));
    EXPECT_EQ(Accepted(-8, keys, messages), QStringLiteral("12-3.4(5)*+/^PpxY"));
    const int beepsBefore = messages.Beeps();
    EXPECT_EQ(Accepted(0, keys, messages), keys);
    EXPECT_EQ(Accepted(-3, keys, messages), keys) << "a mode of no row takes every key";
    EXPECT_EQ(messages.Beeps(), beepsBefore);
}

TEST(KeyFilter, AWholeNameFitsWhenEveryKeyOfItWouldHave) {
    const struct {
        const char* text;
        int mode;
        bool name; // NameFitsFilter: what OK checks
        bool box;  // BoxTextFitsFilter: what a box may hold after a paste
    } cases[] = {
        {"Part 1&(2)+-._", -32, true, true}, {"", -32, true, true},
        {" Part", -32, false, true}, // a blank in front: the box may hold it, OK trims it
        {"..\\Up", -32, false, false},       {"a/b", -32, false, false},
        {"q*?", -32, false, false},          {"t:u", -32, false, false},
        {"a\tb", -32, false, false},         {"a\rb", -32, false, false},
        {"\xe9t\xe9", -32, false, false},    {"*.prg", -322, true, true},
        {"12a", -1, false, false},           {"a\\b*", 0, true, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(NameFitsFilter(QString::fromLatin1(c.text), c.mode), c.name);
        EXPECT_EQ(BoxTextFitsFilter(QString::fromLatin1(c.text), c.mode), c.box);
    }
    // The limit holds for the whole text, blanks in front included.
    EXPECT_TRUE(NameFitsFilter(QString(32, u'x'), -32));
    EXPECT_FALSE(NameFitsFilter(QString(33, u'x'), -32));
    EXPECT_FALSE(BoxTextFitsFilter(u' ' + QString(32, u'x'), -32));
    EXPECT_TRUE(NameFitsFilter(QString(36, u'x'), -322));
}
