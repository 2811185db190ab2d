#include "settings/RestoreDefaults.h"

#include "RecordingFrame.h"

#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

const QString Data = QStringLiteral("C:\\Kestrova\\Setup\\Data\\");
const QString Default = Data + QStringLiteral("Default\\");

// Every file changed after the load that kept the delivered files as the defaults.
const QStringList Changed{"PUNCH1.cms", "PUNCH1.mch", "PUNCH1.msr", "PUNCH1.trt",  "PUNCH1.wrd",
                          "PUNCH1.nst", "PUNCH1.xpt", "RAINER.mch", "Kestrova.cms"};
QString PathOf(const QString& file) {
    return file == "Kestrova.cms" ? QStringLiteral("C:\\Kestrova\\Kestrova.cms") : Data + file;
}

// Only the current machine's files come back, never its nesting and export settings; on Cancel
// nothing does.
TEST(RestoreDefaultsTest, WhatComesBackFollowsTheAnswerThePackagesAndTheDefaultsThere) {
    const struct {
        const char* installation;
        Answer answer;
        QStringList gone; // before the load, or of the defaults
        QStringList restored;
    } rows[] = {
        {"a full installation",
         Answer::Ok,
         {},
         {"PUNCH1.cms", "PUNCH1.mch", "PUNCH1.msr", "PUNCH1.trt", "PUNCH1.wrd", "Kestrova.cms"}},
        {"a full installation, cancelled", Answer::Cancel, {}, {}},
        // The communication files only.
        {"without the CAM packages",
         Answer::Ok,
         {"C:\\Kestrova\\Kestrprg.exe"},
         {"PUNCH1.cms", "Kestrova.cms"}},
        {"defaults missing",
         Answer::Ok,
         {Default + "PUNCH1.mch", Default + "Kestrova.cms"},
         {"PUNCH1.cms", "PUNCH1.msr", "PUNCH1.trt", "PUNCH1.wrd"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.installation);
        InstallationFixture fx;
        RecordingFrame frame;
        for (const QString& file : row.gone)
            if (!file.startsWith(Default))
                fx.Remove(file);
        fx.Load();
        fx.Write(Default + "Kestrova.cms", "delivered\r\n");
        for (const QString& file : Changed)
            fx.Write(PathOf(file), "changed\r\n");
        for (const QString& file : row.gone)
            if (file.startsWith(Default))
                fx.Remove(file);
        fx.Messages().Script({row.answer});
        RestoreDefaults(fx.session(), frame);

        ASSERT_EQ(fx.Messages().Messages().size(), 1);
        const Message& warning = fx.Messages().Messages().first().message;
        EXPECT_EQ(warning.text, "Any Changes To The Data Files For\nTrumpf Punch 5000\nWill be Lost ! ");
        EXPECT_EQ(warning.buttons, Buttons::OkCancel);
        EXPECT_EQ(warning.icon, Icon::Exclamation);
        EXPECT_EQ(warning.defaultButton, 2);
        EXPECT_EQ(warning.title, QStringLiteral("Kestrova"));
        for (const QString& file : Changed)
            EXPECT_EQ(fx.Read(PathOf(file)),
                      row.restored.contains(file) ? fx.Read(Default + file) : "changed\r\n")
                << file.toStdString();
        const bool ok = row.answer == Answer::Ok;
        EXPECT_EQ(frame.log, (ok ? QStringList{"lock", "unlock"} : QStringList()));
        EXPECT_EQ(fx.Messages().BusyCount(), ok ? 1 : 0);
        EXPECT_EQ(fx.Messages().BusyDepth(), 0);
        EXPECT_EQ(fx.Settings().LastAnswer, int(row.answer));
    }
}

} // namespace
