#include "settings/SettingsLine.h"

#include "QtPrinters.h"
#include "Thrown.h"
#include "platform/Blanks.h"
#include "settings/EditorCommand.h"
#include "settings/SettingsFile.h"

#include <gtest/gtest.h>

using namespace kestrova;

// The value is what follows the first colon, trimmed of blanks only: vertical tab, form feed,
// NEL, no-break space and tab are characters a line may hold.
TEST(SettingsLine, TheValueIsWhatFollowsTheFirstColonTrimmedOfBlanksOnly) {
    const struct {
        const char* line;
        const char* value;
    } cases[] = {
        {"Nesting ? (Yes / No)                         : yes", "yes"},
        {"Nesting ? (Yes / No)                         :NO", "NO"},
        {"   No   ", "No"}, // a line without colon is its value
        {"Data Directory : C:\\Data", "C:\\Data"},
        {"Label :", ""},
        {"", ""},
        {"Label : \x0bNo\x0c ", "\x0bNo\x0c"},
        {"Label :\xa0Path\x85  ", "\xa0Path\x85"},
        {"  \tData\t  ", "\tData\t"},
        {"\x0c", "\x0c"},
        {"     ", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(ValueOfLine(QString::fromLatin1(c.line)), QString::fromLatin1(c.value));
        EXPECT_EQ(TrimBlanks(QString::fromLatin1(c.value)), QString::fromLatin1(c.value));
    }
    EXPECT_EQ(TrimBlanks(QStringLiteral("  a b  ")), QStringLiteral("a b"));
    EXPECT_TRUE(HasColon(QStringLiteral("A:")));
    EXPECT_FALSE(HasColon(QStringLiteral("Parts")));
}

TEST(SettingsLine, LeadingNumberReadsAsFarAsTheNumberGoes) {
    EXPECT_EQ(LeadingNumber(QStringLiteral("7.9")), 7.9);
    EXPECT_EQ(LeadingNumber(QStringLiteral("  -3")), -3.0);
    EXPECT_EQ(LeadingNumber(QStringLiteral("1A")), 1.0);
    EXPECT_EQ(LeadingNumber(QStringLiteral("12 34")), 12.0);
    EXPECT_EQ(LeadingNumber(QStringLiteral("+4.5e2mm")), 450.0);
    EXPECT_EQ(LeadingNumber(QStringLiteral("3e")), 3.0)
        << "an exponent without digits is not part of the number";
    EXPECT_EQ(LeadingNumber(QStringLiteral(".5")), 0.5);
    EXPECT_EQ(LeadingNumber(QStringLiteral("abc")), 0.0);
    EXPECT_EQ(LeadingNumber(QStringLiteral("-")), 0.0);
    EXPECT_EQ(LeadingNumber(QString()), 0.0);

    EXPECT_EQ(LeadingInt16(QStringLiteral("7.9")), 7);
    EXPECT_EQ(LeadingInt16(QStringLiteral("-3.9")), -3);
    const QString overflow =
        kestrova::testing::ThrownText<OverflowError>([] { (void)LeadingInt16(QStringLiteral("40000")); });
    EXPECT_TRUE(overflow.startsWith(QStringLiteral("Overflow"))) << overflow.toStdString();
    EXPECT_TRUE(overflow.contains(QStringLiteral("40000")));
}

TEST(EditorCommand, KeepsEverythingUpToTheFirstBlank) {
    EXPECT_EQ(EditorCommand(QString()), QStringLiteral("Notepad.exe "));
    EXPECT_EQ(EditorCommand(QStringLiteral("   ")), QStringLiteral("Notepad.exe "));
    EXPECT_EQ(EditorCommand(QStringLiteral("C:\\Tools\\Edit.exe")), QStringLiteral("C:\\Tools\\Edit.exe "));
    EXPECT_EQ(EditorCommand(QStringLiteral("C:\\Tools\\Edit.exe /nosplash")),
              QStringLiteral("C:\\Tools\\Edit.exe "));
    EXPECT_EQ(EditorCommand(QStringLiteral("C:\\Program Files\\Edit\\Edit.exe")),
              QStringLiteral("C:\\Program "));
}
