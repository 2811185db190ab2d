#include "Frontend/FrontEnd.h"

#include "Frontend/Manuals.h"
#include "MainWindowFixture.h"
#include "ScriptedSerialLine.h"

#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMap>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTimer>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace std::chrono_literals;
using namespace kestrova::testing;

namespace {

// The captions of every menu's entries joined by "|", by the menu's path ("" for the menu bar).
void Captions(const QList<QAction*>& actions, const QString& path, QMap<QString, QString>& out) {
    QStringList here;
    for (QAction* action : actions) {
        if (action->isSeparator())
            continue;
        here << action->text();
        if (QMenu* menu = action->menu(); menu && !menu->actions().isEmpty())
            Captions(menu->actions(), (path.isEmpty() ? QString() : path + u'/') + action->text(), out);
    }
    out[path] = here.join(u'|');
}

class FrontEndTest : public MainWindowFixture {
protected:
    void SetUp() override {
        Launcher().SetBuiltInEditor([this](const QString& file) {
            opened << file;
            // Looks at the window while the front end waits for the editor, then ends.
            struct Editing final : StartedProgram {
                explicit Editing(FrontEndTest& test) : m_test(test) {}
                [[nodiscard]] bool Running() const override {
                    m_test.lockedWhileEditing = !m_test.Entry("FileMenu")->isEnabled();
                    m_test.hiddenWhileEditing = !m_test.window->isVisible();
                    return false;
                }
                FrontEndTest& m_test;
            };
            return std::make_unique<Editing>(*this);
        });
        Open();
    }

    QStringList opened;
    bool lockedWhileEditing = false;
    bool hiddenWhileEditing = false;
};

TEST_F(FrontEndTest, TheWindowOpensWithItsControlsStatusAndEveryMenuSetUp) {
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Kestrova 32  (8.0)"));
    for (const char* control : {"ReceiveFrame", "ReceiveList", "StatusBar", "MenuLine"})
        EXPECT_TRUE(Child(control)) << control;
    EXPECT_EQ(Child<QPushButton>("ReceiveButton")->text(), QStringLiteral("Clear Receive List"));
    EXPECT_EQ(Child<QLabel>("ReceiveLabel")->text(), QStringLiteral("Programs Received"));
    EXPECT_EQ(Status(), QStringLiteral(" Parts|Trumpf Punch 5000 "));

    QMap<QString, QString> captions;
    Captions(window->menuBar()->actions(), QString(), captions);
    const QString data = QStringLiteral("&Setup/Edit Data Files");
    const QMap<QString, QString> expected{
        {"", "&File|&Draw|&Nesting|&Program|&Edit|&Communications|&Reverse|&Setup|&Help"},
        {"&File", "Select &Machine|Change &Directory|Create Directory|Rename Directory|Delete Directory|"
                  "File &Search|Delete File(s)|Rename File As ...|Copy File As ...|Move File(s) To ...|"
                  "Copy File(s) To ...|Restore Drawing|Import File(s)|Import File As ...|Export File(s)|"
                  "Export File As ...|Rainer|E&xit"},
        {"&File/Rainer", "&Export|&Import|Delete|Format"},
        {"&Edit",
         "&Edit Program|New Program|Renumber Program|Strip Numbers|Remove Spaces|View Program Report|"
         "View Nest Report|Program &History"},
        {"&Communications",
         "&Send Program|&Receive Program|Send Executive|Receive Executive|Transfer &Log|DNC &Monitor"},
        {"&Setup", "&Tool Library|&Material Database|&Profile Settings|Stock Manager|Shapes && Tooling|"
                   "Edit Data Files|Restore Defaults|Export System Setup"},
        {data, "Text Editor|Measurement System|Backup Software|Machine Specifications|Drawing Package|"
               "Program Creation|Communications Settings|Kestrova Manuals"},
        {data + "/Machine Specifications", "Machine Specifications|Clamp Zones|Turret Layout"},
        {data + "/Drawing Package", "Drawing Defaults|Multipart Defaults|Digitiser Settings"},
        {data + "/Program Creation", "Auto-Reposition|User Variables|Reserved Words|Tool Definitions|"
                                     "Timing Variables|Post Processor|Reverse Settings"},
        {data + "/Communications Settings", "CNC Communications|Background Receive"},
        {data + "/Kestrova Manuals", "Acrobat|Manuals"},
        {"&Setup/Export System Setup", "Current Machine|All Machines"},
    };
    for (auto it = expected.begin(); it != expected.end(); ++it)
        EXPECT_EQ(captions.value(it.key()), it.value()) << "menu \"" << it.key().toStdString() << '"';
    EXPECT_EQ(captions.keys(), expected.keys());

    // Control arrays: name and index.
    EXPECT_EQ(Entry("FileItem3")->text(), QStringLiteral("Copy File As ..."));
    EXPECT_EQ(Entry("DataFileProgram4")->text(), QStringLiteral("Tool Definitions"));
    EXPECT_EQ(Entry("ExportSystem2")->text(), QStringLiteral("All Machines"));
    EXPECT_EQ(Entry("DataMenuComms")->text(), QStringLiteral("Communications Settings"));

    // The set-up table and the unlocked menus are applied.
    EXPECT_TRUE(AllMenusEnabled());
    for (const char* entry : {"Manuals", "NestingPackage"})
        EXPECT_TRUE(Entry(entry)->isVisible()) << entry;
    for (const char* entry : {"RainerMenu", "ExecItem1", "DataFileGeneral3"})
        EXPECT_FALSE(Entry(entry)->isVisible()) << entry;
    EXPECT_TRUE(Entry("MachineItem")->isEnabled());
    window->LockMenus();
    for (const QString& menu : TopLevelMenus())
        EXPECT_FALSE(window->Entry(menu)->isEnabled()) << menu.toStdString();
    window->UnlockMenus();
    EXPECT_TRUE(AllMenusEnabled());
}

TEST_F(FrontEndTest, APackageRunsWhileTheWindowStaysResponsive) {
    fx.WriteLines(QStringLiteral("C:\\Kestrova\\Next.cfg"),
                  {"C:\\Kestrova", "C:\\Kestrova\\Setup", "C:\\Jobs", "1", "Archive", "******"});
    fx.WriteProgram(QStringLiteral("C:\\Kestrova\\Kestrdrw.exe"), "sleep 1; cp Next.cfg Kestrova.cfg");
    int ticks = 0;
    int ticksWhileDisabled = 0;
    auto* timer = new QTimer(window.get());
    QObject::connect(timer, &QTimer::timeout, [&] {
        ++ticks;
        if (!Entry("DrawingPackage")->isEnabled())
            ++ticksWhileDisabled;
    });
    timer->start(50ms);

    Trigger("DrawingPackage");
    EXPECT_GE(ticks, 10);
    EXPECT_GE(ticksWhileDisabled, 10);
    EXPECT_TRUE(Entry("DrawingPackage")->isEnabled());
    EXPECT_EQ(Status(), QStringLiteral(" Archive|Trumpf Punch 5000 "));
    EXPECT_TRUE(fx.Messages().Log().isEmpty());
}

TEST_F(FrontEndTest, DataFileEntriesOpenTheirFilesWithTheWindowHiddenAndTheMenusLockedOrGiveOneMessage) {
    Trigger("DataFileComms2");
    Trigger("DataFileMachine3");
    Trigger("DataFileGeneral2");
    EXPECT_EQ(opened, (QStringList{"C:\\Kestrova\\Kestrova.cms", "C:\\Kestrova\\Setup\\Data\\PUNCH1.trt",
                                   "C:\\Kestrova\\Setup\\Data\\PUNCH1.msr"}));
    EXPECT_TRUE(lockedWhileEditing);
    EXPECT_TRUE(hiddenWhileEditing);
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(AllMenusEnabled());

    // An error ends the handler with one message and the menus back.
    opened.clear();
    fx.Remove(QStringLiteral("C:\\Kestrova\\Editor.cfg"));
    Trigger("DataFileMachine1");
    ASSERT_EQ(fx.Messages().Messages().size(), 1);
    const Message& shown = fx.Messages().Messages().first().message;
    EXPECT_EQ(shown.text, QStringLiteral("File not found: \"C:\\Kestrova\\Editor.cfg\""));
    EXPECT_EQ(shown.title, QStringLiteral("Kestrova"));
    EXPECT_TRUE(opened.isEmpty());
    EXPECT_TRUE(AllMenusEnabled());
    EXPECT_TRUE(window->isVisible());
}

TEST_F(FrontEndTest, FormEntriesOpenTheirFormsModalInsideTheMenuFrame) {
    window->SetFormLines([] { return std::make_unique<ScriptedSerialLine>(); });
    const struct {
        const char* entry;
        const char* caption;
    } rows[] = {
        {"StripItem2", "Strip Numbers"},
        {"CommsItem1", "Communications - Send Program"},
        {"CommsItem2", "Communications - Receive Program"},
        {"ExecItem2", "Communications - Receive Executive"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.entry);
        QStringList captions;
        bool lockedWhileShown = false;
        // Looks at the form once it is up, then leaves it with Esc.
        QTimer watcher;
        QObject::connect(&watcher, &QTimer::timeout, [&] {
            if (QWidget* form = QApplication::activeModalWidget()) {
                captions << form->windowTitle();
                lockedWhileShown = !AllMenusEnabled();
                QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
                QApplication::sendEvent(form, &escape);
            }
        });
        watcher.start(5);
        Trigger(row.entry);
        EXPECT_EQ(captions, QStringList{row.caption});
        EXPECT_TRUE(lockedWhileShown);
        EXPECT_TRUE(AllMenusEnabled());
    }
    EXPECT_EQ(fx.Settings().EditOperation, 6);
    EXPECT_EQ(fx.Settings().ReceiveOperation, 6);
    EXPECT_TRUE(fx.Messages().Log().isEmpty());
}

TEST_F(FrontEndTest, TheCloseHooksRunOnceHoweverTheWindowIsClosed) {
    for (const bool bySignal : {false, true}) {
        SCOPED_TRACE(bySignal ? "SIGTERM" : "the Exit entry");
        Open();
        int stops = 0;
        window->AddCloseHook([&stops] { ++stops; });
        if (bySignal)
            Sigterm();
        else
            Trigger("ExitItem");
        EXPECT_FALSE(window->isVisible());
        window->close();
        EXPECT_EQ(stops, 1);
    }
}

TEST_F(FrontEndTest, TheManualOpensWithTheReaderOrItsMessages) {
    fx.WriteProgram(QStringLiteral("C:\\Kestrova\\Reader\\Viewer.exe"),
                    "printf '%s\\r\\n' \"$1\" > Opened.txt");
    Trigger("Manuals");
    // The reader's shell creates the file before it writes the line: wait for the line itself.
    EXPECT_TRUE(RunEventsUntil(
        [&] {
            return fx.OnDisk(QStringLiteral("C:\\Kestrova\\Opened.txt")) &&
                   fx.Read(QStringLiteral("C:\\Kestrova\\Opened.txt")).endsWith('\n');
        },
        5000));
    EXPECT_EQ(fx.ReadLines(QStringLiteral("C:\\Kestrova\\Opened.txt")),
              QStringList{fx.Host(QStringLiteral("C:\\Kestrova\\Manuals\\Frontend.pdf"))});

    fx.Remove(QStringLiteral("C:\\Kestrova\\Manuals\\Frontend.pdf"));
    OpenManual(fx.session(), Launcher());
    fx.Remove(QStringLiteral("C:\\Kestrova\\Reader\\Viewer.exe"));
    OpenManual(fx.session(), Launcher());
    EXPECT_EQ(fx.Messages().Log(), (QStringList{"<beep>", "Kestrova Manual is Unavailable !", "<beep>",
                                                "Adobe Acrobat Has Not Been Found !"}));
}

class FrontEndWithoutCamTest : public MainWindowFixture {};

TEST_F(FrontEndWithoutCamTest, OnlyTheFileEditCommunicationsSetupAndHelpMenusRemain) {
    fx.Remove(QStringLiteral("C:\\Kestrova\\Kestrprg.exe"));
    Open();
    QStringList shown;
    for (QAction* action : window->menuBar()->actions())
        if (action->isVisible())
            shown << action->text();
    EXPECT_EQ(shown, (QStringList{"&File", "&Edit", "&Communications", "&Setup", "&Help"}));
    // Shapes & Tooling keeps the place the window gives it.
    EXPECT_TRUE(Entry("ShapeManager")->isVisible());
    EXPECT_FALSE(Entry("MaterialDatabase")->isVisible());
}

} // namespace
