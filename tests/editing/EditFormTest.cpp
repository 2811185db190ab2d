#include "editing/forms/EditForm.h"

#include "FaultInjector.h"
#include "InstallationFixture.h"

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::FaultInjector;
using kestrova::testing::InstallationFixture;

namespace {

const QString Parts = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\");
const QString LastFile = QStringLiteral("C:\\Kestrova\\Lastfile.lst");

class EditFormTest : public ::testing::Test {
protected:
    void SetUp() override {
        fixture.Load();
        launcher.SetBuiltInEditor([this](const QString& file) {
            builtIn << file;
            struct Closed final : StartedProgram {
                [[nodiscard]] bool Running() const override { return false; }
            };
            return std::make_unique<Closed>();
        });
        fixture.WriteLines(LastFile, {QStringLiteral("******")});
    }
    std::unique_ptr<EditForm> Open(int operation) {
        fixture.Settings().EditOperation = Int16::From(operation);
        auto form = std::make_unique<EditForm>(fixture.session(), launcher);
        form->show();
        return form;
    }
    template <typename W>
    static W* Child(const EditForm& form, const char* name) {
        W* w = form.findChild<W*>(QLatin1String(name));
        EXPECT_TRUE(w) << name;
        return w;
    }
    // Selects the named entries of a list, as Ctrl-click on each would.
    static void Pick(QListWidget* list, const QStringList& names) {
        list->clearSelection();
        for (const QString& name : names) {
            const auto found = list->findItems(name, Qt::MatchExactly);
            ASSERT_EQ(found.size(), 1) << name.toStdString();
            list->setCurrentItem(found.front(), QItemSelectionModel::Select);
        }
    }
    static void Ok(EditForm& form) { QTest::mouseClick(Child<QPushButton>(form, "EditOk"), Qt::LeftButton); }

    InstallationFixture fixture;
    ProgramLauncher launcher{fixture.Files()};
    QStringList builtIn;
};

TEST_F(EditFormTest, EachOperationArrangesTheForm) {
    struct Case {
        int operation;
        const char* caption;
        const char* visible; // the parts shown: 1 list one, 2 list two, B name box, D directories, S search,
                             // R renumber
    };
    const Case cases[] = {
        {1, "Edit Program", "1DS"},     {2, "Edit New Program", "B"},   {3, "View Setup Sheet", "1DS"},
        {4, "View Nest Report", "1DS"}, {5, "Renumber Program", "2DR"}, {6, "Strip Numbers", "2D"},
        {7, "Remove Spaces", "2D"},
    };
    const std::pair<char, const char*> parts[] = {{'1', "EditList1"}, {'2', "EditList2"},
                                                  {'B', "EditBox"},   {'D', "DirectoryFrame"},
                                                  {'S', "Search"},    {'R', "RenumFrame"}};
    for (const Case& c : cases) {
        auto form = Open(c.operation);
        EXPECT_EQ(form->windowTitle(), QLatin1String(c.caption));
        for (const auto& [part, name] : parts)
            EXPECT_EQ(Child<QWidget>(*form, name)->isVisible(), std::strchr(c.visible, part) != nullptr)
                << c.operation << " " << name;
        if (c.operation != 2) {
            EXPECT_EQ(Child<QLabel>(*form, "ListLabel")->text(), QLatin1String(c.caption));
        }
    }
    // The lists: programs, or the reports by their own extension.
    EXPECT_EQ(Child<QListWidget>(*Open(1), "EditList1")->count(), 4); // Bracket, bracket-2, Cover, X
    auto sheets = Open(3);
    ASSERT_EQ(Child<QListWidget>(*sheets, "EditList1")->count(), 1);
    EXPECT_EQ(Child<QListWidget>(*sheets, "EditList1")->item(0)->text(), QStringLiteral("X"));
}

TEST_F(EditFormTest, RefusalsKeepTheFormOpen) {
    struct Case {
        int operation;
        const char* typedName;
        const char* start;
        const char* increment;
        bool pick;
        const char* message;
        const char* focus;
    };
    const Case cases[] = {
        {1, "", "", "", false, "No Program Selected !", "EditList1"},
        {3, "", "", "", false, "No Job Selected !", "EditList1"},
        {4, "", "", "", false, "No Job Selected !", "EditList1"},
        {2, "", "", "", false, "Invalid File Name !", "EditBox"},
        {5, "", "10", "10", false, "No Programs Selected !", "EditList2"},
        {6, "", "", "", false, "No Programs Selected !", "EditList2"},
        {7, "", "", "", false, "No Programs Selected !", "EditList2"},
        {5, "", "10", "0", true, "Invalid Specification !", "RenumBox1"},
        {5, "", "10", "", true, "Invalid Specification !", "RenumBox1"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.operation << " " << c.message);
        fixture.Messages().Clear();
        auto form = Open(c.operation);
        if (c.pick)
            Pick(Child<QListWidget>(*form, "EditList2"), {QStringLiteral("Cover")});
        QTest::keyClicks(Child<QLineEdit>(*form, "EditBox"), QLatin1String(c.typedName));
        QTest::keyClicks(Child<QLineEdit>(*form, "RenumBox1"), QLatin1String(c.start));
        QTest::keyClicks(Child<QLineEdit>(*form, "RenumBox2"), QLatin1String(c.increment));
        Ok(*form);
        EXPECT_EQ(fixture.Messages().Log(),
                  (QStringList{QStringLiteral("<beep>"), QLatin1String(c.message)}));
        EXPECT_TRUE(form->isVisible());
        EXPECT_EQ(form->focusWidget() ? form->focusWidget()->objectName() : QString(),
                  QLatin1String(c.focus));
    }
    EXPECT_TRUE(builtIn.isEmpty());
}

TEST_F(EditFormTest, TheNumberBoxesTakeDigitsOnly) {
    auto form = Open(5);
    auto* start = Child<QLineEdit>(*form, "RenumBox1");
    QTest::keyClicks(start, QStringLiteral("-0a1 0."));
    EXPECT_EQ(start->text(), QStringLiteral("010"));
}

TEST_F(EditFormTest, TheRewritesAskFirstAndWorkOnEverySelectedProgram) {
    struct Case {
        int operation;
        QStringList picked;
        const char* start;
        Answer answer;
        const char* question;
        QByteArray cover; // Cover.prg afterwards
    };
    const QByteArray cover("%\r\nN5  G00 X0 Y0\r\n%\r\n");
    const Case cases[] = {
        {5, {"Cover"}, "0010", Answer::Yes, "Renumber \"Cover\" ?", "%\r\nN0010 G00 X0 Y0\r\nN0015 %\r\n"},
        {5,
         {"Bracket", "Cover"},
         "5",
         Answer::Yes,
         "Renumber 2 Programs ?",
         "%\r\nN5 G00 X0 Y0\r\nN10 %\r\n"},
        {5, {"Cover"}, "0", Answer::No, "Renumber \"Cover\" ?", cover},
        {5, {"Cover"}, "32767", Answer::No, "Renumber \"Cover\" ?", cover}, // the largest start
        {5, {"Cover"}, "", Answer::Yes, "Renumber \"Cover\" ?", "%\r\nN0 G00 X0 Y0\r\nN5 %\r\n"},
        {6, {"Cover"}, "", Answer::Yes, "Stip Line Numbers From \"Cover\" ?", "%\r\nG00 X0 Y0\r\n%\r\n"},
        {6, {"Bracket", "Cover", "X"}, "", Answer::No, "Stip Line Numbers From 3 Programs ?", cover},
        {7, {"Cover"}, "", Answer::Yes, "Remove Spaces From \"Cover\" ?", "%\r\nN5G00X0Y0\r\n%\r\n"},
        {7, {"Cover", "X"}, "", Answer::Yes, "Remove Spaces From 2 Programs ?", "%\r\nN5G00X0Y0\r\n%\r\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.question);
        fixture.Write(Parts + "Cover.prg", cover);
        fixture.Messages().Clear();
        fixture.Messages().Script({c.answer});
        auto form = Open(c.operation);
        Pick(Child<QListWidget>(*form, "EditList2"), c.picked);
        QTest::keyClicks(Child<QLineEdit>(*form, "RenumBox1"), QLatin1String(c.start));
        QTest::keyClicks(Child<QLineEdit>(*form, "RenumBox2"), QStringLiteral("5"));
        Ok(*form);
        EXPECT_EQ(fixture.Messages().Texts(), QStringList(QLatin1String(c.question)));
        EXPECT_EQ(fixture.Messages().Messages().front().message.defaultButton, 2);
        EXPECT_EQ(fixture.Settings().LastAnswer, int(c.answer));
        EXPECT_FALSE(form->isVisible());
        EXPECT_EQ(fixture.Read(Parts + "Cover.prg"), c.cover);
    }
    // The other programs of the batches.
    EXPECT_EQ(fixture.Read(Parts + "Bracket.prg"), QByteArray("%\r\nN5 G90\r\nN10 %\r\n"));
    EXPECT_EQ(fixture.Read(Parts + "X.prg"), QByteArray("Xprg\r\n"));
}

TEST_F(EditFormTest, AFailedRewriteStopsTheBatchWithOneMessage) {
    const QByteArray bracket = fixture.Read(Parts + "Bracket.prg");
    const QByteArray cover = fixture.Read(Parts + "Cover.prg");
    FaultInjector faults(fixture.Files());
    faults.Fail(FileStep::Replace, QStringLiteral("Bracket.prg"), EIO);
    fixture.Messages().Script({Answer::Yes});
    auto form = Open(6);
    Pick(Child<QListWidget>(*form, "EditList2"), {QStringLiteral("Bracket"), QStringLiteral("Cover")});
    Ok(*form);
    ASSERT_EQ(fixture.Messages().Texts().size(), 2);
    EXPECT_EQ(fixture.Messages().Texts().at(1),
              QStringLiteral("Device I/O error: \"C:\\Jobs\\PUNCH1\\Parts\\Bracket.prg\"\n"
                             "The Program \"C:\\Jobs\\PUNCH1\\Parts\\Bracket.prg\" Is Unchanged !\n"
                             "The New Text Of \"C:\\Jobs\\PUNCH1\\Parts\\Bracket.prg\" Is In "
                             "\"C:\\Kestrova\\Numbers.tmp\" !"));
    EXPECT_EQ(fixture.Read(Parts + "Bracket.prg"), bracket);
    EXPECT_EQ(fixture.Read(Parts + "Cover.prg"), cover); // not attempted
    EXPECT_TRUE(form->isVisible());
    EXPECT_EQ(fixture.Messages().BusyDepth(), 0);
}

TEST_F(EditFormTest, OpeningFilesInTheEditor) {
    // The stand-in editor records its arguments only once the test lets it go on: had OK waited
    // for it, OK would never return.
    fixture.WriteProgram(QStringLiteral("C:\\Tools\\Edit.exe"),
                         "for i in $(seq 400); do [ -f Go ] && break; sleep 0.05; done; "
                         "printf '%s\\r\\n' \"$#\" \"$@\" > Args.tmp; mv Args.tmp Args.txt");
    fixture.WriteLines(QStringLiteral("C:\\Kestrova\\Editor.cfg"),
                       {QStringLiteral("C:\\Tools\\Edit.exe -n")});
    auto form = Open(2);
    QTest::keyClicks(Child<QLineEdit>(*form, "EditBox"), QStringLiteral("Bracket 7 "));
    Ok(*form);
    EXPECT_FALSE(form->isVisible());
    fixture.Write(QStringLiteral("C:\\Kestrova\\Go"), "");
    for (int i = 0; i < 400 && !fixture.OnDisk(QStringLiteral("C:\\Kestrova\\Args.txt")); ++i)
        (void)PauseInEventLoop(std::chrono::milliseconds(50));
    EXPECT_EQ(fixture.ReadLines(QStringLiteral("C:\\Kestrova\\Args.txt")),
              (QStringList{"1", fixture.Host("C:\\Jobs\\PUNCH1\\Parts\\Bracket 7.prg")}));
    EXPECT_EQ(fixture.Read(Parts + "Bracket 7.prg"), QByteArray()); // created empty
    EXPECT_EQ(fixture.ReadLines(LastFile), (QStringList{"Parts", "Bracket 7", "******"}));

    // "Notepad.exe" is the built-in editor. With nothing selected, the remembered program opens,
    // its directory made current; the reports take their own extension.
    fixture.WriteLines(QStringLiteral("C:\\Kestrova\\Editor.cfg"), {QString()});
    fixture.WriteLines(LastFile, {"Kestrova", "Sample", "******"});
    auto edit = Open(1);
    EXPECT_EQ(fixture.Settings().CurrentDir, QStringLiteral("Kestrova"));
    auto* list = Child<QListWidget>(*edit, "EditList1");
    ASSERT_TRUE(list->currentItem());
    EXPECT_EQ(list->currentItem()->text(), QStringLiteral("Sample"));
    list->clearSelection();
    Ok(*edit);
    auto sheet = Open(4);
    auto* directories = Child<QListWidget>(*sheet, "DirectoryList");
    directories->setCurrentItem(directories->findItems(QStringLiteral("Parts"), Qt::MatchExactly).front());
    Pick(Child<QListWidget>(*sheet, "EditList1"), {QStringLiteral("X")});
    Ok(*sheet);
    EXPECT_EQ(builtIn,
              (QStringList{"C:\\Jobs\\PUNCH1\\Kestrova\\Sample.prg", "C:\\Jobs\\PUNCH1\\Parts\\X.rpt"}));
    EXPECT_EQ(fixture.ReadLines(LastFile), (QStringList{"Parts", "X", "******"}));
    EXPECT_TRUE(fixture.Messages().Log().isEmpty()) << fixture.Messages().Log().join(u'|').toStdString();
}

TEST_F(EditFormTest, AProgramFoundBySearchIsChosenInItsDirectory) {
    auto form = Open(1);
    ASSERT_EQ(fixture.Settings().CurrentDir, QStringLiteral("Parts"));
    QString searched;
    QTimer::singleShot(0, [&] {
        QWidget* picker = QApplication::activeModalWidget();
        ASSERT_TRUE(picker);
        searched = picker->findChild<QLabel*>(QStringLiteral("CriteriaLabel"))->text();
        QTest::keyClicks(picker->findChild<QLineEdit*>(QStringLiteral("CriteriaBox")),
                         QStringLiteral("ampl"));
        QTest::mouseClick(picker->findChild<QPushButton*>(QStringLiteral("CriteriaOk")), Qt::LeftButton);
        QTest::mouseClick(picker->findChild<QPushButton*>(QStringLiteral("SearchOk")), Qt::LeftButton);
    });
    QTest::mouseClick(Child<QPushButton>(*form, "Search"), Qt::LeftButton);
    EXPECT_EQ(searched, QStringLiteral("Programs"));
    EXPECT_EQ(fixture.Settings().CurrentDir, QStringLiteral("Kestrova"));
    EXPECT_EQ(Child<QListWidget>(*form, "DirectoryList")->currentItem()->text(), QStringLiteral("Kestrova"));
    Ok(*form);
    EXPECT_EQ(builtIn, QStringList(QStringLiteral("C:\\Jobs\\PUNCH1\\Kestrova\\Sample.prg")));
}

TEST_F(EditFormTest, AStartNumberBeyondSixteenBitsIsAnOverflowShownOnce) {
    const QByteArray cover = fixture.Read(Parts + "Cover.prg");
    auto form = Open(5);
    Pick(Child<QListWidget>(*form, "EditList2"), {QStringLiteral("Cover")});
    QTest::keyClicks(Child<QLineEdit>(*form, "RenumBox1"), QStringLiteral("32768"));
    QTest::keyClicks(Child<QLineEdit>(*form, "RenumBox2"), QStringLiteral("1"));
    Ok(*form);
    EXPECT_EQ(fixture.Messages().Texts(), QStringList(QStringLiteral("Overflow (the number \"32768\")")));
    EXPECT_TRUE(form->isVisible()) << "the form stays for a better one";
    EXPECT_EQ(fixture.Read(Parts + "Cover.prg"), cover);
}

TEST_F(EditFormTest, TheViewsOpenTheRememberedProgramsReportWhenNothingIsSelected) {
    const struct {
        int operation;
        const char* opened;
    } cases[] = {{3, "C:\\Jobs\\PUNCH1\\Parts\\X.inf"}, {4, "C:\\Jobs\\PUNCH1\\Parts\\X.rpt"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.operation);
        builtIn.clear();
        fixture.WriteLines(LastFile, {"Parts", "X", "******"});
        auto form = Open(c.operation);
        // Another directory, where nothing is chosen: OK goes back to the remembered one.
        auto* directories = Child<QListWidget>(*form, "DirectoryList");
        directories->setCurrentItem(
            directories->findItems(QStringLiteral("Kestrova"), Qt::MatchExactly).front());
        ASSERT_EQ(fixture.Settings().CurrentDir, QStringLiteral("Kestrova"));
        Child<QListWidget>(*form, "EditList1")->clearSelection();
        Ok(*form);
        EXPECT_EQ(builtIn, QStringList(QLatin1String(c.opened)));
        EXPECT_EQ(fixture.Settings().CurrentDir, QStringLiteral("Parts"));
        EXPECT_TRUE(fixture.Messages().Log().isEmpty()) << fixture.Messages().Log().join(u'|').toStdString();
    }
}

TEST_F(EditFormTest, ANewProgramsNameTakesNameKeysOnlyAndThirtyTwoCharactersAtMost) {
    const QString longest(32, u'n');
    auto form = Open(2);
    auto* box = Child<QLineEdit>(*form, "EditBox");
    QTest::keyClicks(box, QStringLiteral(" ../Part:1"));
    EXPECT_EQ(box->text(), QStringLiteral("..Part1"));
    fixture.Messages().Clear();
    // Put there other than by keys, which the box does not filter: OK refuses it.
    box->setText(longest + u'n');
    Ok(*form);
    EXPECT_EQ(fixture.Messages().Log(),
              (QStringList{QStringLiteral("<beep>"), QStringLiteral("Invalid File Name !")}));
    EXPECT_TRUE(form->isVisible());
    box->clear();
    fixture.Messages().Clear();
    QTest::keyClicks(box, longest + u'n');
    EXPECT_EQ(box->text(), longest);
    EXPECT_EQ(fixture.Messages().Log(), QStringList(QStringLiteral("<beep>")))
        << "the key past the limit is refused";
    Ok(*form);
    EXPECT_FALSE(form->isVisible());
    EXPECT_EQ(builtIn, QStringList(Parts + longest + ".prg"));
}

} // namespace
