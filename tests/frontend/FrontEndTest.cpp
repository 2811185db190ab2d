#include "Frontend/FrontEnd.h"

#include "Frontend/Manuals.h"
#include "Frontend/StartUp.h"
#include "Frontend/StatusBox.h"
#include "InstallationFixture.h"
#include "ScriptedSerialLine.h"
#include "filestore/forms/NameKeyFilter.h"
#include "platform/TerminationSignals.h"

#include <QAction>
#include <QApplication>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTimer>
#include <csignal>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace std::chrono_literals;
using kestrova::testing::InstallationFixture;

namespace {

// Every entry of a menu as "caption" lines, submenus indented by their path.
void Captions(const QList<QAction*>& actions, const QString& path, QStringList& out) {
    for (QAction* action : actions) {
        if (action->isSeparator())
            continue;
        const QString caption = path + action->text();
        out << caption;
        if (QMenu* menu = action->menu())
            Captions(menu->actions(), caption + u'/', out);
    }
}

class FrontEndTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(LoadAtStartUp(fixture.session()), 0);
        launcher.SetBuiltInEditor([this](const QString& file) {
            opened << file;
            // Looks at the window while the front end waits for the editor, then ends.
            struct Editing final : StartedProgram {
                explicit Editing(FrontEndTest& test) : m_test(test) {}
                [[nodiscard]] bool Running() const override {
                    m_test.lockedWhileEditing =
                        !m_test.window->Entry(QStringLiteral("FileMenu"))->isEnabled();
                    m_test.hiddenWhileEditing = !m_test.window->isVisible();
                    return false;
                }
                FrontEndTest& m_test;
            };
            return std::make_unique<Editing>(*this);
        });
        window = std::make_unique<FrontEnd>(fixture.session(), launcher);
        window->show();
    }
    void Trigger(const char* entry) {
        QAction* action = window->Entry(QString::fromLatin1(entry));
        ASSERT_TRUE(action) << entry;
        action->trigger();
    }
    bool Visible(const char* entry) { return window->Entry(QString::fromLatin1(entry))->isVisible(); }
    bool Enabled(const char* entry) { return window->Entry(QString::fromLatin1(entry))->isEnabled(); }
    bool AllMenusEnabled() {
        for (const QString& menu : TopLevelMenus())
            if (!window->Entry(menu)->isEnabled())
                return false;
        return true;
    }

    InstallationFixture fixture;
    ProgramLauncher launcher{fixture.Files()};
    std::unique_ptr<FrontEnd> window;
    QStringList opened;
    bool lockedWhileEditing = false;
    bool hiddenWhileEditing = false;
};

TEST_F(FrontEndTest, TheWindowHasItsControlsAndEveryMenuWithItsCaption) {
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Kestrova 32  (8.0)"));
    for (const char* control : {"ReceiveFrame", "ReceiveList", "StatusBar", "MenuLine"})
        EXPECT_TRUE(window->findChild<QWidget*>(QString::fromLatin1(control))) << control;
    EXPECT_EQ(window->findChild<QPushButton*>("ReceiveButton")->text(), QStringLiteral("Clear Receive List"));
    EXPECT_EQ(window->findChild<QLabel*>("ReceiveLabel")->text(), QStringLiteral("Programs Received"));

    QStringList captions;
    Captions(window->menuBar()->actions(), QString(), captions);
    EXPECT_EQ(captions, (QStringList{"&File",
                                     "&File/Select &Machine",
                                     "&File/Change &Directory",
                                     "&File/Create Directory",
                                     "&File/Rename Directory",
                                     "&File/Delete Directory",
                                     "&File/File &Search",
                                     "&File/Delete File(s)",
                                     "&File/Rename File As ...",
                                     "&File/Copy File As ...",
                                     "&File/Move File(s) To ...",
                                     "&File/Copy File(s) To ...",
                                     "&File/Restore Drawing",
                                     "&File/Import File(s)",
                                     "&File/Import File As ...",
                                     "&File/Export File(s)",
                                     "&File/Export File As ...",
                                     "&File/Rainer",
                                     "&File/Rainer/&Export",
                                     "&File/Rainer/&Import",
                                     "&File/Rainer/Delete",
                                     "&File/Rainer/Format",
                                     "&File/E&xit",
                                     "&Draw",
                                     "&Nesting",
                                     "&Program",
                                     "&Edit",
                                     "&Edit/&Edit Program",
                                     "&Edit/New Program",
                                     "&Edit/Renumber Program",
                                     "&Edit/Strip Numbers",
                                     "&Edit/Remove Spaces",
                                     "&Edit/View Program Report",
                                     "&Edit/View Nest Report",
                                     "&Communications",
                                     "&Communications/&Send Program",
                                     "&Communications/&Receive Program",
                                     "&Communications/Send Executive",
                                     "&Communications/Receive Executive",
                                     "&Communications/Transfer &Log",
                                     "&Reverse",
                                     "&Setup",
                                     "&Setup/&Tool Library",
                                     "&Setup/&Material Database",
                                     "&Setup/&Profile Settings",
                                     "&Setup/Stock Manager",
                                     "&Setup/Shapes && Tooling",
                                     "&Setup/Edit Data Files",
                                     "&Setup/Edit Data Files/Text Editor",
                                     "&Setup/Edit Data Files/Measurement System",
                                     "&Setup/Edit Data Files/Backup Software",
                                     "&Setup/Edit Data Files/Machine Specifications",
                                     "&Setup/Edit Data Files/Machine Specifications/Machine Specifications",
                                     "&Setup/Edit Data Files/Machine Specifications/Clamp Zones",
                                     "&Setup/Edit Data Files/Machine Specifications/Turret Layout",
                                     "&Setup/Edit Data Files/Drawing Package",
                                     "&Setup/Edit Data Files/Drawing Package/Drawing Defaults",
                                     "&Setup/Edit Data Files/Drawing Package/Multipart Defaults",
                                     "&Setup/Edit Data Files/Drawing Package/Digitiser Settings",
                                     "&Setup/Edit Data Files/Program Creation",
                                     "&Setup/Edit Data Files/Program Creation/Auto-Reposition",
                                     "&Setup/Edit Data Files/Program Creation/User Variables",
                                     "&Setup/Edit Data Files/Program Creation/Reserved Words",
                                     "&Setup/Edit Data Files/Program Creation/Tool Definitions",
                                     "&Setup/Edit Data Files/Program Creation/Timing Variables",
                                     "&Setup/Edit Data Files/Program Creation/Post Processor",
                                     "&Setup/Edit Data Files/Program Creation/Reverse Settings",
                                     "&Setup/Edit Data Files/Communications Settings",
                                     "&Setup/Edit Data Files/Communications Settings/CNC Communications",
                                     "&Setup/Edit Data Files/Communications Settings/Background Receive",
                                     "&Setup/Edit Data Files/Kestrova Manuals",
                                     "&Setup/Edit Data Files/Kestrova Manuals/Acrobat",
                                     "&Setup/Edit Data Files/Kestrova Manuals/Manuals",
                                     "&Setup/Restore Defaults",
                                     "&Setup/Export System Setup",
                                     "&Setup/Export System Setup/Current Machine",
                                     "&Setup/Export System Setup/All Machines",
                                     "&Help"}));

    // Control arrays: name and index.
    EXPECT_EQ(window->Entry("FileItem3")->text(), QStringLiteral("Copy File As ..."));
    EXPECT_EQ(window->Entry("DataFileProgram4")->text(), QStringLiteral("Tool Definitions"));
    EXPECT_EQ(window->Entry("ExportSystem2")->text(), QStringLiteral("All Machines"));
    EXPECT_EQ(window->Entry("DataMenuComms")->text(), QStringLiteral("Communications Settings"));
}

TEST_F(FrontEndTest, TheStatusBarShowsTheDirectoryAndTheMachine) {
    const auto* status = window->findChild<StatusBox*>("StatusBar");
    EXPECT_EQ(status->LeftText(), QStringLiteral(" Parts"));
    EXPECT_EQ(status->RightText(), QStringLiteral("Trumpf Punch 5000 "));
}

TEST_F(FrontEndTest, TheSetUpTableAndTheUnlockedMenusAreApplied) {
    EXPECT_TRUE(AllMenusEnabled());
    EXPECT_TRUE(Visible("Manuals"));
    EXPECT_TRUE(Visible("NestingPackage"));
    EXPECT_FALSE(Visible("RainerMenu"));
    EXPECT_FALSE(Visible("ExecItem1"));
    EXPECT_FALSE(Visible("DataFileGeneral3"));
    EXPECT_TRUE(Enabled("MachineItem"));

    window->LockMenus();
    for (const QString& menu : TopLevelMenus())
        EXPECT_FALSE(window->Entry(menu)->isEnabled()) << menu.toStdString();
    window->UnlockMenus();
    EXPECT_TRUE(AllMenusEnabled());
}

TEST_F(FrontEndTest, APackageRunsWhileTheWindowStaysResponsive) {
    fixture.WriteLines(QStringLiteral("C:\\Kestrova\\Next.cfg"),
                       {QStringLiteral("C:\\Kestrova"), QStringLiteral("C:\\Kestrova\\Setup"),
                        QStringLiteral("C:\\Jobs"), QStringLiteral("1"), QStringLiteral("Archive"),
                        QStringLiteral("******")});
    fixture.WriteProgram(QStringLiteral("C:\\Kestrova\\Kestrdrw.exe"), "sleep 1; cp Next.cfg Kestrova.cfg");
    int ticks = 0;
    int ticksWhileDisabled = 0;
    auto* timer = new QTimer(window.get());
    QObject::connect(timer, &QTimer::timeout, [&] {
        ++ticks;
        if (!Enabled("DrawingPackage"))
            ++ticksWhileDisabled;
    });
    timer->start(50ms);

    Trigger("DrawingPackage");
    EXPECT_GE(ticks, 10);
    EXPECT_GE(ticksWhileDisabled, 10);
    EXPECT_TRUE(Enabled("DrawingPackage"));
    EXPECT_EQ(window->findChild<StatusBox*>("StatusBar")->LeftText(), QStringLiteral(" Archive"));
    EXPECT_TRUE(fixture.Messages().Log().isEmpty());
}

TEST_F(FrontEndTest, DataFileEntriesOpenTheirFilesWithTheWindowHiddenAndTheMenusLocked) {
    Trigger("DataFileComms2");
    Trigger("DataFileMachine3");
    Trigger("DataFileGeneral2");
    EXPECT_EQ(opened, (QStringList{"C:\\Kestrova\\Kestrova.cms", "C:\\Kestrova\\Setup\\Data\\PUNCH1.trt",
                                   "C:\\Kestrova\\Setup\\Data\\PUNCH1.msr"}));
    EXPECT_TRUE(lockedWhileEditing);
    EXPECT_TRUE(hiddenWhileEditing);
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(AllMenusEnabled());
}

TEST_F(FrontEndTest, AnErrorEndsTheHandlerWithOneMessageAndTheMenusBack) {
    fixture.Remove(QStringLiteral("C:\\Kestrova\\Editor.cfg"));
    Trigger("DataFileMachine1");
    ASSERT_EQ(fixture.Messages().Messages().size(), 1);
    const Message& shown = fixture.Messages().Messages().first().message;
    EXPECT_TRUE(shown.text.contains(QStringLiteral("File not found")));
    EXPECT_TRUE(shown.text.contains(QStringLiteral("C:\\Kestrova\\Editor.cfg")));
    EXPECT_EQ(shown.title, QStringLiteral("Kestrova"));
    EXPECT_TRUE(opened.isEmpty());
    EXPECT_TRUE(AllMenusEnabled());
    EXPECT_TRUE(window->isVisible());
}

TEST_F(FrontEndTest, RestoreDefaultsCancelledLeavesFilesAndMenus) {
    const QByteArray before = fixture.Read(QStringLiteral("C:\\Kestrova\\Setup\\Data\\PUNCH1.mch"));
    fixture.Write(QStringLiteral("C:\\Kestrova\\Setup\\Data\\PUNCH1.mch"), "changed\r\n");
    fixture.Messages().Script({Answer::Cancel});
    Trigger("RestoreDefaults");
    EXPECT_EQ(fixture.Read(QStringLiteral("C:\\Kestrova\\Setup\\Data\\PUNCH1.mch")),
              QByteArray("changed\r\n"));
    EXPECT_TRUE(AllMenusEnabled());

    fixture.Messages().Script({Answer::Ok});
    Trigger("RestoreDefaults");
    EXPECT_EQ(fixture.Read(QStringLiteral("C:\\Kestrova\\Setup\\Data\\PUNCH1.mch")), before);
    EXPECT_TRUE(AllMenusEnabled());
}

TEST_F(FrontEndTest, FormEntriesSetTheirModeInsideTheMenuFrame) {
    // The edit form opens modal with the menus locked.
    QString shown;
    bool lockedWhileShown = false;
    QTimer::singleShot(0, [&] {
        QWidget* form = QApplication::activeModalWidget();
        ASSERT_TRUE(form);
        shown = form->windowTitle();
        lockedWhileShown = !AllMenusEnabled();
        QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
        QApplication::sendEvent(form, &escape);
    });
    Trigger("StripItem2");
    EXPECT_EQ(fixture.Settings().EditOperation, 6);
    EXPECT_EQ(shown, QStringLiteral("Strip Numbers"));
    EXPECT_TRUE(lockedWhileShown);
    EXPECT_TRUE(AllMenusEnabled());
    EXPECT_TRUE(fixture.Messages().Log().isEmpty());
}

TEST_F(FrontEndTest, TheReceiveListShowsWhatItIsGiven) {
    EXPECT_FALSE(window->findChild<QWidget*>("ReceiveFrame")->isVisible());
    window->SetReceivedPrograms(
        {QStringLiteral("PUNCH1  Parts  Bracket"), QStringLiteral("PUNCH1  Parts  Cover")});
    window->ShowReceiveFrame(true);
    EXPECT_TRUE(window->findChild<QWidget*>("ReceiveFrame")->isVisible());
    EXPECT_EQ(window->ReceivedPrograms().size(), 2);
    int focused = 0;
    QObject::connect(window.get(), &FrontEnd::ReceiveListFocused, [&focused] { ++focused; });
    auto* list = window->findChild<QListWidget*>("ReceiveList");
    QFocusEvent focusIn(QEvent::FocusIn);
    QApplication::sendEvent(list, &focusIn);
    list->setCurrentRow(1);
    window->LeaveReceiveList();
    EXPECT_EQ(focused, 1);
    EXPECT_TRUE(list->selectedItems().isEmpty());
    // The focus the window gives when it is active.
    EXPECT_EQ(window->focusWidget(), window->findChild<QPushButton*>("ReceiveButton"));

    window->SetReceivedPrograms({});
    EXPECT_TRUE(window->ReceivedPrograms().isEmpty());
}

TEST_F(FrontEndTest, ClosingRunsTheCloseHooksOnceHoweverItIsClosed) {
    int stops = 0;
    window->AddCloseHook([&stops] { ++stops; });
    Trigger("ExitItem");
    EXPECT_FALSE(window->isVisible());
    window->close();
    EXPECT_EQ(stops, 1);
}

TEST_F(FrontEndTest, SigtermClosesTheWindowTheSameWay) {
    int stops = 0;
    window->AddCloseHook([&stops] { ++stops; });
    const TerminationSignals termination([this] { window->close(); });
    std::raise(SIGTERM);
    for (int i = 0; i < 50 && window->isVisible(); ++i)
        ASSERT_TRUE(PauseInEventLoop(10ms));
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(stops, 1);
}

TEST_F(FrontEndTest, TheManualOpensWithTheReaderOrItsMessages) {
    fixture.WriteProgram(QStringLiteral("C:\\Kestrova\\Reader\\Viewer.exe"),
                         "printf '%s\\r\\n' \"$1\" > Opened.txt");
    Trigger("Manuals");
    for (int i = 0; i < 200 && !fixture.OnDisk(QStringLiteral("C:\\Kestrova\\Opened.txt")); ++i)
        ASSERT_TRUE(PauseInEventLoop(10ms));
    EXPECT_EQ(fixture.ReadLines(QStringLiteral("C:\\Kestrova\\Opened.txt")),
              QStringList{fixture.Host(QStringLiteral("C:\\Kestrova\\Manuals\\Frontend.pdf"))});

    fixture.Remove(QStringLiteral("C:\\Kestrova\\Manuals\\Frontend.pdf"));
    OpenManual(fixture.session(), launcher);
    fixture.Remove(QStringLiteral("C:\\Kestrova\\Reader\\Viewer.exe"));
    OpenManual(fixture.session(), launcher);
    EXPECT_EQ(fixture.Messages().Log(), (QStringList{"<beep>", "Kestrova Manual is Unavailable !", "<beep>",
                                                     "Adobe Acrobat Has Not Been Found !"}));
}

TEST(FrontEndWithoutCamTest, OnlyTheFileEditCommunicationsSetupAndHelpMenusRemain) {
    InstallationFixture fixture;
    fixture.Remove(QStringLiteral("C:\\Kestrova\\Kestrprg.exe"));
    ASSERT_EQ(LoadAtStartUp(fixture.session()), 0);
    ProgramLauncher launcher(fixture.Files());
    FrontEnd window(fixture.session(), launcher);
    QStringList shown;
    for (QAction* action : window.menuBar()->actions())
        if (action->isVisible())
            shown << action->text();
    EXPECT_EQ(shown, (QStringList{"&File", "&Edit", "&Communications", "&Setup", "&Help"}));
    // Shapes & Tooling keeps the place the window gives it.
    EXPECT_TRUE(window.Entry(QStringLiteral("ShapeManager"))->isVisible());
    EXPECT_FALSE(window.Entry(QStringLiteral("MaterialDatabase"))->isVisible());
}

} // namespace

TEST_F(FrontEndTest, TheCommunicationsEntriesOpenTheSendAndReceiveFormsInTheMenuFrame) {
    window->SetFormLines([] { return std::make_unique<kestrova::testing::ScriptedSerialLine>(); });
    QStringList captions;
    QList<bool> lockedWhileOpen;
    // Looks at each form once it is up, then cancels it.
    QTimer watcher;
    watcher.setInterval(5);
    QObject::connect(&watcher, &QTimer::timeout, [&] {
        if (QWidget* form = QApplication::activeModalWidget()) {
            captions << form->windowTitle();
            lockedWhileOpen << !window->Entry(QStringLiteral("CommsMenu"))->isEnabled();
            form->close();
        }
    });
    watcher.start();
    for (const char* entry : {"CommsItem1", "CommsItem2", "ExecItem2"})
        window->Entry(QLatin1String(entry))->trigger();
    watcher.stop();
    EXPECT_EQ(captions, (QStringList{"Communications - Send Program", "Communications - Receive Program",
                                     "Communications - Receive Executive"}));
    EXPECT_EQ(lockedWhileOpen, (QList<bool>{true, true, true}));
    EXPECT_EQ(fixture.Settings().ReceiveOperation, 6);
    EXPECT_TRUE(window->Entry(QStringLiteral("CommsMenu"))->isEnabled());
    EXPECT_TRUE(fixture.Messages().Texts().isEmpty());
}

