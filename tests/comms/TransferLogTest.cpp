// The transfer log as another program reading "Transfer.log" sees it: whole CR LF lines, the
// newest last, and a log that cannot be written never stopping the transfer that logs.
#include "comms/TransferLog.h"

#include "FaultInjector.h"
#include "InstallationFixture.h"

#include <QRegularExpression>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

TEST(TransferLogTest, EachTransferIsOneWholeLineAppendedAndAFailedWriteIsNotTheTransfersFailure) {
    InstallationFixture fx;
    fx.Load();
    AppendTransferLog(fx.session(), {"PUNCH25", 1, "Louvre", 1234, "sent"});
    AppendTransferLog(fx.session(), {"RAINER", 12, "Door", 0, "failed: COM12 was lost"});

    const QByteArray log = fx.Read(QStringLiteral("C:\\Kestrova\\Transfer.log"));
    const QRegularExpression lines(QStringLiteral(
        "^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d  PUNCH25  COM1  Louvre  1234 bytes  sent\r\n"
        "\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d  RAINER  COM12  Door  0 bytes  failed: COM12 was "
        "lost\r\n$"));
    EXPECT_TRUE(lines.match(QString::fromLatin1(log)).hasMatch()) << log.toStdString();
    const QStringList last = LastTransferLogLines(fx.session(), 1);
    ASSERT_EQ(last.size(), 1);
    EXPECT_TRUE(last.front().endsWith(QStringLiteral("Door  0 bytes  failed: COM12 was lost")));

    FaultInjector faults(fx.Files());
    faults.Fail(FileStep::Write, QStringLiteral("Transfer.log"));
    EXPECT_NO_THROW(AppendTransferLog(fx.session(), {"PUNCH25", 1, "Guard", 5, "received"}));
    EXPECT_EQ(faults.Fired(), 1);
    EXPECT_EQ(fx.Read(QStringLiteral("C:\\Kestrova\\Transfer.log")), log) << "nothing half-written";
}
