#include "settings/EnvironmentLoad.h"

#include "Frontend/StartUp.h"
#include "InstallationFixture.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::InstallationFixture;

TEST(EnvironmentLoad, FillsEveryEnvironmentFieldOfTheFixture) {
    InstallationFixture fx;
    fx.Load();
    const GlobalSettings& g = fx.Settings();
    EXPECT_EQ(g.SystemPath, QStringLiteral("C:\\Kestrova\\"));
    EXPECT_EQ(g.ProgramPath, QStringLiteral("C:\\Kestrova\\"));
    EXPECT_EQ(g.ProgramDrive, QStringLiteral("C:\\"));
    EXPECT_EQ(g.SetupPath, QStringLiteral("C:\\Kestrova\\Setup\\"));
    EXPECT_EQ(g.RootPath, QStringLiteral("C:\\Jobs\\"));
    EXPECT_EQ(g.MachineNumber, 1);
    EXPECT_EQ(g.RevSubsPath, QStringLiteral("C:\\Kestrova\\Setup\\RevSubs\\"));
    EXPECT_EQ(g.RestoreStem, QStringLiteral("C:\\Kestrova\\Undo\\Restore."));
    EXPECT_TRUE(g.CamPackagesPresent);
    EXPECT_TRUE(g.ReversePresent);
    EXPECT_EQ(g.MachineCount, 3);
    EXPECT_EQ(g.MachineTable.at(3).field2, QStringLiteral("LASER"));
    EXPECT_EQ(g.ReverseCount, 1);
    EXPECT_EQ(g.ReverseTable.at(1).field1, QStringLiteral("Reverse Fanuc"));
    EXPECT_EQ(g.AcrobatPath, QStringLiteral("C:\\Kestrova\\Reader\\Viewer.exe"));
    EXPECT_EQ(g.ManualsPath, QStringLiteral("C:\\Kestrova\\Manuals\\"));
    EXPECT_TRUE(g.ManualsAvailable);
    EXPECT_EQ(fx.ReadLines(QStringLiteral("C:\\Kestrova\\Manuals.cfg")),
              (QStringList{"C:\\Kestrova\\Manuals\\", "******"}));

    // The suite's directories and the first-run copy of the delivered data files.
    for (const char* dir : {"C:\\Kestrova\\Setup\\Blocks", "C:\\Kestrova\\Setup\\Material",
                            "C:\\Kestrova\\Setup\\RevSubs", "C:\\Kestrova\\Undo"})
        EXPECT_TRUE(fx.OnDisk(QLatin1String(dir))) << dir;
    EXPECT_EQ(fx.Read(QStringLiteral("C:\\Kestrova\\Setup\\Data\\Default\\PUNCH1.cms")),
              fx.Read(QStringLiteral("C:\\Kestrova\\Setup\\Data\\PUNCH1.cms")));
    // Only on the first run: a file changed since is no default.
    fx.Write(QStringLiteral("C:\\Kestrova\\Setup\\Data\\PUNCH1.msr"), "Measurement : Imperial\r\n");
    fx.Load();
    EXPECT_NE(fx.Read(QStringLiteral("C:\\Kestrova\\Setup\\Data\\Default\\PUNCH1.msr")),
              fx.Read(QStringLiteral("C:\\Kestrova\\Setup\\Data\\PUNCH1.msr")));
}

TEST(EnvironmentLoad, ReadsKestrovaCfgLineByLine) {
    InstallationFixture fx;
    const QString cfg = QStringLiteral("C:\\Kestrova\\Kestrova.cfg");
    const auto load = [&](const QString& line4, const QString& line5) {
        fx.WriteLines(cfg, {"C:\\Kestrova\\", "C:\\Kestrova\\Setup", "C:\\Jobs", line4, line5, "******"});
        LoadEnvironment(fx.session(), fx.PdfSearchDirs);
        return fx.Settings();
    };
    EXPECT_EQ(load("0", "Parts").MachineNumber, 1);
    EXPECT_EQ(load("-3", "Parts").MachineNumber, 1);
    EXPECT_EQ(load("7.9", "Parts").MachineNumber, 7);
    EXPECT_EQ(load("2", "A:").CurrentDir, QString()) << "a drive is never remembered as the directory";
    EXPECT_EQ(load("2", "  Parts  ").CurrentDir, QStringLiteral("Parts"));
    EXPECT_EQ(load("2", "\tParts\x0c ").CurrentDir, QStringLiteral("\tParts\x0c")) << "only blanks go";

    // A host absolute path is the same place on drive Z:.
    fx.WriteLines(cfg, {fx.StartDir(), "C:\\Kestrova\\Setup", "/srv/jobs", "1", "Parts", "******"});
    LoadEnvironment(fx.session(), fx.PdfSearchDirs);
    EXPECT_EQ(fx.Settings().RootPath, QStringLiteral("Z:\\srv\\jobs\\"));
    EXPECT_EQ(fx.Settings().SystemPath,
              QStringLiteral("Z:") + QString(fx.StartDir()).replace(u'/', u'\\') + u'\\');
    EXPECT_EQ(fx.Settings().ProgramDrive, QStringLiteral("Z:\\"));
}

TEST(EnvironmentLoad, AMissingOrShortKestrovaCfgStopsStartUpWithOneMessage) {
    const struct {
        QStringList cfg; // none: no "Kestrova.cfg"
        QString message;
    } rows[] = {
        {{}, "File not found: \"C:\\Kestrova\\Kestrova.cfg\""},
        {{"C:\\Kestrova", "C:\\Kestrova\\Setup", "C:\\Jobs", "1"},
         "Input past end of file: \"C:\\Kestrova\\Kestrova.cfg\""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.message.toStdString());
        InstallationFixture fx;
        if (row.cfg.isEmpty())
            fx.Remove(QStringLiteral("C:\\Kestrova\\Kestrova.cfg"));
        else
            fx.WriteLines(QStringLiteral("C:\\Kestrova\\Kestrova.cfg"), row.cfg);
        EXPECT_EQ(LoadAtStartUp(fx.session()), 1);
        ASSERT_EQ(fx.Messages().Texts(), QStringList{row.message});
        EXPECT_EQ(fx.Messages().Messages().first().message.title, QStringLiteral("Kestrova"));
    }
}

TEST(EnvironmentLoad, PackagesDecideWhatIsPresent) {
    InstallationFixture fx;
    fx.Remove(QStringLiteral("C:\\Kestrova\\Kestrprg.exe"));
    fx.Remove(QStringLiteral("C:\\Kestrova\\Reverse.lst")); // not read without the packages
    LoadEnvironment(fx.session(), fx.PdfSearchDirs);
    EXPECT_FALSE(fx.Settings().CamPackagesPresent);
    EXPECT_FALSE(fx.Settings().ReversePresent) << "reverse needs the CAM packages too";
    EXPECT_EQ(fx.Settings().ReverseCount, 0);
    EXPECT_FALSE(fx.OnDisk(QStringLiteral("C:\\Kestrova\\Setup\\Blocks")));
    EXPECT_FALSE(fx.OnDisk(QStringLiteral("C:\\Kestrova\\Undo")));
}

TEST(EnvironmentLoad, FindsTheManualsAndThePdfReader) {
    InstallationFixture fx;
    // Without "Acrobat.cfg" a viewer on the search path is found and remembered.
    fx.Remove(QStringLiteral("C:\\Kestrova\\Acrobat.cfg"));
    const QString viewers = fx.Host(QStringLiteral("C:\\viewers"));
    QDir().mkpath(viewers);
    QFile viewer(viewers + QStringLiteral("/okular"));
    ASSERT_TRUE(viewer.open(QIODevice::WriteOnly));
    viewer.close();
    viewer.setPermissions(QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    fx.PdfSearchDirs = {viewers};
    LoadEnvironment(fx.session(), fx.PdfSearchDirs);
    EXPECT_EQ(fx.Settings().AcrobatPath, QStringLiteral("C:\\viewers\\okular"));
    EXPECT_EQ(fx.ReadLines(QStringLiteral("C:\\Kestrova\\Acrobat.cfg")),
              (QStringList{"C:\\viewers\\okular", "******"}));

    // A configured reader that is not there, or a line of six characters or fewer, is no reader.
    fx.WriteLines(QStringLiteral("C:\\Kestrova\\Acrobat.cfg"), {"C:\\Gone\\Reader.exe", "******"});
    LoadEnvironment(fx.session(), fx.PdfSearchDirs);
    EXPECT_EQ(fx.Settings().AcrobatPath, QString());
    EXPECT_FALSE(fx.Settings().ManualsAvailable);
    fx.WriteLines(QStringLiteral("C:\\Kestrova\\Acrobat.cfg"), {"C:\\a.e", "******"});
    fx.Write(QStringLiteral("C:\\a.e"), "");
    LoadEnvironment(fx.session(), fx.PdfSearchDirs);
    EXPECT_EQ(fx.Settings().AcrobatPath, QString());

    // Manuals elsewhere; a directory without any PDF is no manuals directory.
    fx.WriteLines(QStringLiteral("C:\\Kestrova\\Acrobat.cfg"),
                  {"C:\\Kestrova\\Reader\\Viewer.exe", "******"});
    fx.WriteLines(QStringLiteral("C:\\Kestrova\\Manuals.cfg"), {"C:\\Docs", "******"});
    fx.MakeDir(QStringLiteral("C:\\Docs"));
    LoadEnvironment(fx.session(), fx.PdfSearchDirs);
    EXPECT_EQ(fx.Settings().ManualsPath, QString());
    EXPECT_FALSE(fx.Settings().ManualsAvailable);
    fx.Write(QStringLiteral("C:\\Docs\\Other.PDF"), "%PDF");
    LoadEnvironment(fx.session(), fx.PdfSearchDirs);
    EXPECT_EQ(fx.Settings().ManualsPath, QStringLiteral("C:\\Docs\\"));
    EXPECT_FALSE(fx.Settings().ManualsAvailable) << "no Frontend.pdf";
    fx.Write(QStringLiteral("C:\\Docs\\frontend.pdf"), "%PDF");
    LoadEnvironment(fx.session(), fx.PdfSearchDirs);
    EXPECT_TRUE(fx.Settings().ManualsAvailable);
}
