// The DNC monitor offscreen: what a running service publishes, line by line, followed live; a
// service that is gone is told as such; the form is read and left from the keyboard alone.
#include "comms/forms/DncMonitorForm.h"

#include "DncInstallation.h"
#include "comms/TransferLog.h"

#include <QApplication>
#include <QLabel>
#include <QPlainTextEdit>
#include <QTableWidget>
#include <QTest>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

const QString StateFile = QStringLiteral("C:\\Kestrova\\Dnc.state");

QStringList Row(const QTableWidget& table, int row) {
    QStringList cells;
    for (int column = 0; column < table.columnCount(); ++column)
        cells << (table.item(row, column) ? table.item(row, column)->text() : QStringLiteral("<none>"));
    return cells;
}

} // namespace

TEST(DncMonitorForm, ShowsEachServedLineLiveAndTellsWhenNoServiceRuns) {
    InstallationFixture fx;
    fx.Load();
    AppendTransferLog(fx.session(), {"PUNCH1", 1, "Louvre", 198, "received"});
    fx.WriteLines(
        StateFile,
        {QStringLiteral("Process : %1").arg(QCoreApplication::applicationPid()), "COM1\tPUNCH1\tlistening",
         "COM3\tLASER\treceiving P100, 2048 characters\tlast error: COM3: the device went away", "******"});
    DncMonitorForm form(fx.session());
    form.show();
    auto* table = form.findChild<QTableWidget*>("DncLines");
    auto* heading = form.findChild<QLabel*>("DncHeading");
    auto* transfers = form.findChild<QPlainTextEdit*>("DncTransfers");
    ASSERT_TRUE(table && heading && transfers);
    EXPECT_EQ(heading->text(), QStringLiteral("The DNC service (process %1) serves 2 lines.")
                                   .arg(QCoreApplication::applicationPid()));
    ASSERT_EQ(table->rowCount(), 2);
    EXPECT_EQ(Row(*table, 0), (QStringList{"Trumpf Punch 5000", "COM1", "listening", ""}));
    EXPECT_EQ(Row(*table, 1), (QStringList{"Laser 3030 Terminal", "COM3", "receiving P100, 2048 characters",
                                           "COM3: the device went away"}));
    EXPECT_TRUE(transfers->toPlainText().contains("PUNCH1  COM1  Louvre  198 bytes  received"));

    // The operator's place stays on the line chosen while the states change under it.
    QTest::keyClick(table, Qt::Key_Down);
    fx.WriteLines(StateFile, {QStringLiteral("Process : %1").arg(QCoreApplication::applicationPid()),
                              "COM1\tPUNCH1\tsending Bracket, 10 of 100 characters", "COM3\tLASER\tlistening",
                              "******"});
    ASSERT_TRUE(RunEventsUntil([&] { return table->item(1, 2)->text() == "listening"; }, 5000));
    EXPECT_EQ(table->item(0, 2)->text(), "sending Bracket, 10 of 100 characters");
    EXPECT_EQ(table->currentRow(), 1);

    // A service that ended without a word (its file left behind) holds nothing any more.
    fx.WriteLines(StateFile, {"Process : 999999999", "COM1\tPUNCH1\tlistening", "******"});
    form.Refresh();
    EXPECT_EQ(heading->text(), "No DNC service is running: the lines are the window's own.");
    EXPECT_EQ(table->rowCount(), 0);

    // From the keyboard: the list first, Tab to the transfers, Alt+L back, Esc closes.
    QTest::keyClick(table, Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), transfers);
    QTest::keyClick(transfers, Qt::Key_L, Qt::AltModifier);
    EXPECT_EQ(QApplication::focusWidget(), table);
    QTest::keyClick(table, Qt::Key_Escape);
    EXPECT_FALSE(form.isVisible());
}

// The whole way from a served line to the form: the service's own publication shows the program
// arriving, by the name its header gives, and its characters so far.
TEST(DncMonitorForm, FollowsWhatTheServiceItselfPublishes) {
    ScriptedService s;
    ServeMachines(s.fx, 3);
    s.fx.Load();
    s.Start();
    s.lines.at(3)->Feed("\x17LASER\r\n\x18Parts\r\n\x19P100\r\nG01 X1\r\n");
    DncMonitorForm form(s.fx.session());
    form.show();
    auto* table = form.findChild<QTableWidget*>("DncLines");
    ASSERT_TRUE(RunEventsUntil(
        [&] {
            form.Refresh();
            return table->rowCount() == 3 && table->item(2, 2)->text().startsWith("receiving P100");
        },
        5000));
    EXPECT_EQ(Row(*table, 2),
              (QStringList{"Laser 3030 Terminal", "COM3", "receiving P100, 31 characters", ""}));
    EXPECT_EQ(Row(*table, 0), (QStringList{"Trumpf Punch 5000", "COM1", "listening", ""}));
    s.lines.at(3)->Feed("%");
    ASSERT_TRUE(RunEventsUntil(
        [&] {
            form.Refresh();
            return table->item(2, 2)->text() == "listening";
        },
        5000));
    EXPECT_TRUE(form.findChild<QPlainTextEdit*>("DncTransfers")->toPlainText().contains("P100"));
}
