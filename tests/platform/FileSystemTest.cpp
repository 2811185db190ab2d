#include "platform/FileSystem.h"

#include "FaultInjector.h"
#include "InstallationFixture.h"
#include "QtPrinters.h"
#include "Thrown.h"
#include "platform/TextFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <functional>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <vector>

using namespace kestrova;
using kestrova::testing::InstallationFixture;
using kestrova::testing::ThrownText;

namespace {

bool OnOneDevice(const QString& a, const QString& b) {
    struct stat sa {
    }, sb{};
    return ::stat(QFile::encodeName(a).constData(), &sa) == 0 &&
           ::stat(QFile::encodeName(b).constData(), &sb) == 0 && sa.st_dev == sb.st_dev;
}

QString LastName(const QString& path) {
    return path.mid(path.lastIndexOf(u'\\') + 1);
}

} // namespace

TEST(FileSystem, FindsEveryComponentIgnoringCaseAndCreatesWithTheSpellingAsked) {
    InstallationFixture fx;
    FileSystem& files = fx.Files();
    EXPECT_TRUE(files.IsFile(QStringLiteral("c:\\JOBS\\punch1\\parts\\BRACKET.drw")));
    EXPECT_EQ(files.HostPath(QStringLiteral("c:\\JOBS\\punch1\\parts\\BRACKET.drw")),
              fx.Host(QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\Bracket.drw")));
    EXPECT_TRUE(files.IsDirectory(QStringLiteral("C:/jobs/Punch1/PARTS/")));

    // Two names that differ only in case: the one spelled as asked, else the first in name order.
    fx.Write(QStringLiteral("C:\\Jobs\\Dup.txt"), "lower");
    fx.Write(QStringLiteral("C:\\Jobs\\DUP.txt"), "upper");
    EXPECT_EQ(ReadAllBytes(files, QStringLiteral("C:\\Jobs\\Dup.txt")), QByteArray("lower"));
    EXPECT_EQ(ReadAllBytes(files, QStringLiteral("C:\\Jobs\\dup.TXT")), QByteArray("upper"));

    // Existing directories keep their spelling, the new name gets the one asked for.
    WriteAllLines(files, QStringLiteral("c:\\jobs\\punch1\\parts\\NewOne.PRG"), {QStringLiteral("%")});
    EXPECT_TRUE(fx.OnDisk(QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\NewOne.PRG")));
    files.MakeDirectory(QStringLiteral("c:\\JOBS\\punch1\\MixedCase"));
    EXPECT_TRUE(QFileInfo(fx.Host(QStringLiteral("C:\\Jobs\\PUNCH1\\MixedCase"))).isDir());
}

TEST(FileSystem, ResolvesRelativePathsHostNotationAndHostPathsBack) {
    InstallationFixture fx;
    FileSystem& files = fx.Files();
    EXPECT_EQ(files.CurrentDirectory(), QStringLiteral("C:\\Kestrova"));
    EXPECT_EQ(files.FullPath(QStringLiteral("Kestrova.cfg")), QStringLiteral("C:\\Kestrova\\Kestrova.cfg"));
    EXPECT_EQ(files.FullPath(QStringLiteral("..\\Jobs\\.\\PUNCH1")), QStringLiteral("C:\\Jobs\\PUNCH1"));
    EXPECT_EQ(files.FullPath(QStringLiteral("\\Jobs")), QStringLiteral("C:\\Jobs"));
    EXPECT_EQ(files.FullPath(QStringLiteral("/srv/kestrova")), QStringLiteral("Z:\\srv\\kestrova"));
    EXPECT_EQ(files.SystemPathOfHost(fx.Host(QStringLiteral("C:\\Jobs\\PUNCH1"))),
              QStringLiteral("C:\\Jobs\\PUNCH1"));
    EXPECT_EQ(files.SystemPathOfHost(QStringLiteral("/usr/bin")), QStringLiteral("Z:\\usr\\bin"));

    files.ChangeDirectory(QStringLiteral("c:\\jobs\\punch1"));
    EXPECT_EQ(files.FullPath(QStringLiteral("Parts\\X.prg")),
              QStringLiteral("C:\\jobs\\punch1\\Parts\\X.prg"));
    files.ChangeDrive(QStringLiteral("A:"));
    EXPECT_EQ(files.CurrentDirectory(), QStringLiteral("A:\\"));
    files.ChangeDrive(QStringLiteral("C:\\anything"));
    EXPECT_EQ(files.CurrentDirectory(), QStringLiteral("C:\\jobs\\punch1"))
        << "each drive keeps its own directory";

    EXPECT_TRUE(ThrownText<PathNotFoundError>([&] {
                    files.ChangeDirectory(QStringLiteral("C:\\Nowhere"));
                }).contains(QStringLiteral("C:\\Nowhere")));
    EXPECT_TRUE(ThrownText<DiskNotReadyError>([&] {
                    files.ChangeDrive(QStringLiteral("G:"));
                }).startsWith(QStringLiteral("Disk not ready")));
    EXPECT_TRUE(ThrownText<DeviceUnavailableError>([&] {
                    files.ChangeDrive(QStringLiteral("H:"));
                }).startsWith(QStringLiteral("Device unavailable")));
}

TEST(FileSystem, ListsByPatternListsIgnoringCaseInNameOrder) {
    InstallationFixture fx;
    FileSystem& files = fx.Files();
    const QString dir = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\");
    fx.Write(dir + "a.DRW", "");
    fx.Write(dir + ".hidden.drw", "");
    fx.MakeDir(dir + "Sub.drw");

    EXPECT_EQ(files.List(dir, QStringLiteral("*.drw"), EntryKinds::Files),
              (QStringList{"a.DRW", "Bracket.drw", "X.drw"}));
    EXPECT_EQ(
        files.List(dir, QStringLiteral(" *.drw ; *.prg "), EntryKinds::Files),
        (QStringList{"a.DRW", "bracket-2.PRG", "Bracket.drw", "Bracket.prg", "Cover.prg", "X.drw", "X.prg"}));
    EXPECT_EQ(files.List(dir, QStringLiteral("*.drw"), EntryKinds::Directories), (QStringList{"Sub.drw"}));
    // "X.*" finds the file without extension too; "?" is one character.
    EXPECT_EQ(
        files.Find(dir + "x.*", EntryKinds::Files),
        (QStringList{"X", "X.drw", "X.dxf", "X.inf", "X.nst", "X.prg", "X.rpt", "X.seq", "X.stp", "X.usr"}));
    EXPECT_EQ(files.Find(dir + "?.d*", EntryKinds::Files), (QStringList{"a.DRW", "X.drw", "X.dxf"}));
    // A trailing "*" also matches nothing at all.
    EXPECT_EQ(files.Find(dir + "cover.PRG*", EntryKinds::Files), QStringList{"Cover.prg"});
    EXPECT_EQ(files.Find(dir + "X*", EntryKinds::Files).first(), QStringLiteral("X"));
    EXPECT_TRUE(files.Find(dir + "*.*", EntryKinds::Files).contains(QStringLiteral("X")));
    EXPECT_EQ(files.List(QStringLiteral("C:\\Jobs\\PUNCH1"), QStringLiteral("*.*"), EntryKinds::Both),
              (QStringList{"Archive", "EXSUBS", "Kestrova", "Parts"}));
    EXPECT_TRUE(files.List(QStringLiteral("C:\\Missing"), QStringLiteral("*.*"), EntryKinds::Both).isEmpty());
    EXPECT_TRUE(files.List(QStringLiteral("H:\\"), QStringLiteral("*.*"), EntryKinds::Both).isEmpty());
}

TEST(FileSystem, DrivesAreReadyWhenMappedAndPresent) {
    InstallationFixture fx;
    FileSystem& files = fx.Files();
    EXPECT_TRUE(files.DriveReady(u'A'));
    EXPECT_TRUE(files.DriveReady(u'c'));
    EXPECT_FALSE(files.DriveReady(u'G')) << "mapped, but nothing at its host path";
    EXPECT_FALSE(files.DriveReady(u'H')) << "not mapped";
    EXPECT_EQ(files.DriveType(u'A'), DriveKind::Removable);
    EXPECT_EQ(files.DriveType(u'F'), DriveKind::Fixed);
    EXPECT_FALSE(files.DriveType(u'H'));
    QString letters;
    for (const DriveMapping& d : files.Drives())
        letters += d.letter;
    EXPECT_EQ(letters, QStringLiteral("ACEFGZ"));
    EXPECT_FALSE(files.Exists(QStringLiteral("H:\\anything")));
    EXPECT_FALSE(files.Exists(QStringLiteral("G:\\anything")));
}

TEST(FileSystem, CopiesByteForByteAndReplacesTheTargetWhole) {
    InstallationFixture fx;
    FileSystem& files = fx.Files();
    QByteArray bytes("line\r\nbare\rlf\n");
    bytes.append('\0').append("\x80\xff\x1a tail");
    fx.Write(QStringLiteral("C:\\Jobs\\source.bin"), bytes);
    fx.Write(QStringLiteral("A:\\TARGET.BIN"), QByteArray(100000, 'x'));
    files.Copy(QStringLiteral("c:\\jobs\\SOURCE.bin"), QStringLiteral("A:\\target.bin"));
    EXPECT_EQ(fx.Read(QStringLiteral("A:\\TARGET.BIN")), bytes);
    EXPECT_EQ(files.List(QStringLiteral("A:\\"), QStringLiteral("*"), EntryKinds::Files),
              (QStringList{"TARGET.BIN"}))
        << "the replaced target keeps its spelling and nothing is left beside it";
    EXPECT_EQ(files.Length(QStringLiteral("A:\\target.bin")), bytes.size());
}

TEST(FileSystem, ErrorsNameTheSystemPathAndTheReason) {
    InstallationFixture fx;
    FileSystem& files = fx.Files();
    const QString parts = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\");

    EXPECT_EQ(ThrownText<FileNotFoundError>([&] { files.Copy(parts + "Nothing.prg", parts + "Y.prg"); }),
              QStringLiteral("File not found: \"C:\\Jobs\\PUNCH1\\Parts\\Nothing.prg\""));
    EXPECT_EQ(
        ThrownText<PathNotFoundError>([&] { files.Copy(parts + "X.prg", QStringLiteral("C:\\No\\Y.prg")); }),
        QStringLiteral("Path not found: \"C:\\No\\Y.prg\""));
    EXPECT_EQ(ThrownText<FileNotFoundError>([&] { files.Delete(parts + "Gone.prg"); }),
              QStringLiteral("File not found: \"C:\\Jobs\\PUNCH1\\Parts\\Gone.prg\""));
    EXPECT_TRUE(ThrownText<FileAlreadyExistsError>([&] {
                    files.Rename(parts + "X.prg", parts + "cover.PRG");
                }).startsWith(QStringLiteral("File already exists: \"C:\\Jobs\\PUNCH1\\Parts\\cover.PRG\"")));
    EXPECT_TRUE(ThrownText<PathFileAccessError>([&] {
                    files.MakeDirectory(QStringLiteral("C:\\jobs\\punch1\\PARTS"));
                }).contains(QStringLiteral("C:\\jobs\\punch1\\PARTS")));
    EXPECT_TRUE(ThrownText<PathFileAccessError>([&] {
                    files.RemoveDirectory(parts);
                }).startsWith(QStringLiteral("Path/File access error")));
    EXPECT_TRUE(ThrownText<DiskNotReadyError>([&] {
                    files.Copy(parts + "X.prg", QStringLiteral("G:\\X.prg"));
                }).contains(QStringLiteral("G:\\X.prg")));
    EXPECT_TRUE(ThrownText<DeviceUnavailableError>([&] {
                    files.Delete(QStringLiteral("H:\\X.prg"));
                }).contains(QStringLiteral("H:\\X.prg")));

    // A read-only program is neither replaced nor deleted.
    QFile::setPermissions(fx.Host(parts + "Cover.prg"), QFileDevice::ReadOwner);
    EXPECT_EQ(ThrownText<PermissionDeniedError>([&] { files.Copy(parts + "X.prg", parts + "COVER.prg"); }),
              QStringLiteral("Permission denied: \"C:\\Jobs\\PUNCH1\\Parts\\COVER.prg\""));
    EXPECT_TRUE(ThrownText<PermissionDeniedError>([&] {
                    files.Delete(parts + "Cover.prg");
                }).startsWith("Permission"));
    EXPECT_EQ(fx.ReadLines(parts + "Cover.prg").value(1), QStringLiteral("G00 X0 Y0"));
}

TEST(FileSystem, RenamesDeletesAndRemovesDirectories) {
    InstallationFixture fx;
    FileSystem& files = fx.Files();
    const QString parts = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\");
    files.Rename(parts + "cover.prg", parts + "COVER.prg");
    EXPECT_TRUE(fx.OnDisk(parts + "COVER.prg")) << "a change of letter case alone is a rename";
    EXPECT_FALSE(fx.OnDisk(parts + "Cover.prg"));
    files.Rename(parts + "COVER.prg", QStringLiteral("E:\\Cover.prg"));
    EXPECT_TRUE(fx.OnDisk(QStringLiteral("E:\\Cover.prg")));
    files.Rename(QStringLiteral("C:\\Jobs\\PUNCH1\\archive"), QStringLiteral("C:\\Jobs\\PUNCH1\\Old Jobs"));
    EXPECT_TRUE(fx.OnDisk(QStringLiteral("C:\\Jobs\\PUNCH1\\Old Jobs\\Old.drw")));
    files.Delete(QStringLiteral("C:\\Jobs\\PUNCH1\\old jobs\\OLD.DRW"));
    files.RemoveDirectory(QStringLiteral("C:\\Jobs\\PUNCH1\\old jobs"));
    EXPECT_FALSE(fx.OnDisk(QStringLiteral("C:\\Jobs\\PUNCH1\\Old Jobs")));
    EXPECT_THROW(files.Delete(parts), FileNotFoundError) << "a directory is not deleted as a file";
}

namespace {

// The ways a whole file is replaced: a copy over an existing target, a rewrite, and a file of
// new text moved over it (which is gone afterwards, unless it had to be copied).
struct Replacement {
    const char* name;
    std::function<void(FileSystem&, const QString& target)> run;
    QByteArray newBytes;
    bool moves = false;
};

const QString Source = QStringLiteral("C:\\Jobs\\source.bin");
const QByteArray CopiedBytes(1500000, 'n'); // more than one step of a copy, so a write fails part-way

std::vector<Replacement> Replacements() {
    return {
        {"copy", [](FileSystem& f, const QString& target) { f.Copy(Source, target); }, CopiedBytes},
        {"rewrite", [](FileSystem& f, const QString& target) { WriteAllLines(f, target, {"new"}); },
         "new\r\n"},
        {"move", [](FileSystem& f, const QString& target) { f.MoveOver(Source, target); }, CopiedBytes, true},
    };
}

// The target as operators' setups have it: a plain file, one readable only by the owner and
// the operators' group, or a link into a shared set-up (whose real file the rewrite must fill),
// here or on another device, where a move must copy.
enum class Shape { Plain, Mode0640, Link, LinkElsewhere };
const Shape AllShapes[] = {Shape::Plain, Shape::Mode0640, Shape::Link, Shape::LinkElsewhere};

struct Target {
    QString path;     // the system path the program writes
    QString realHost; // the host path of the file that holds the text
    QString linkHost; // the link's host path, "" for none
    QFileDevice::Permissions mode;
};

Target MakeTarget(InstallationFixture& fx, Shape shape, const QByteArray& bytes) {
    Target t{QStringLiteral("C:\\Jobs\\TARGET.BIN"), {}, {}, {}};
    if (shape == Shape::Link) {
        fx.Write(QStringLiteral("C:\\Shared\\real.bin"), bytes);
        t.realHost = fx.Host(QStringLiteral("C:\\Shared\\real.bin"));
        t.linkHost = fx.Host(t.path);
        EXPECT_TRUE(QFile::link(QStringLiteral("../Shared/real.bin"), t.linkHost));
    } else if (shape == Shape::LinkElsewhere) {
        static const QTemporaryDir elsewhere(QStringLiteral("/dev/shm/kestrova-XXXXXX"));
        t.realHost = elsewhere.filePath(QStringLiteral("real.bin"));
        QFile real(t.realHost);
        EXPECT_TRUE(real.open(QIODevice::WriteOnly | QIODevice::Truncate));
        real.write(bytes);
        t.linkHost = fx.Host(t.path);
        EXPECT_TRUE(QFile::link(t.realHost, t.linkHost));
    } else {
        fx.Write(t.path, bytes);
        t.realHost = fx.Host(t.path);
    }
    if (shape != Shape::Plain)
        QFile::setPermissions(t.realHost, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup);
    t.mode = QFile::permissions(t.realHost);
    return t;
}

// What the target looks like afterwards: the bytes at the real file, its mode, the link and
// every name in the directories concerned (nothing left half written beside them).
void ExpectTarget(InstallationFixture& fx, const Target& t, const QByteArray& bytes, bool sourceLeft = true) {
    QFile real(t.realHost);
    ASSERT_TRUE(real.open(QIODevice::ReadOnly));
    EXPECT_EQ(real.readAll(), bytes);
    EXPECT_EQ(QFile::permissions(t.realHost), t.mode);
    if (!t.linkHost.isEmpty()) {
        EXPECT_TRUE(QFileInfo(t.linkHost).isSymLink());
        EXPECT_EQ(QFileInfo(t.linkHost).symLinkTarget(), QFileInfo(t.realHost).absoluteFilePath());
        EXPECT_EQ(QDir(QFileInfo(t.realHost).path()).entryList(QDir::Files | QDir::Hidden),
                  QStringList{"real.bin"});
    }
    EXPECT_EQ(fx.Files().List(QStringLiteral("C:\\Jobs"), QStringLiteral("*"), EntryKinds::Files),
              sourceLeft ? (QStringList{"source.bin", "TARGET.BIN"}) : QStringList{"TARGET.BIN"});
}

} // namespace

TEST(FileSystem, AReplacedFileKeepsItsLinkAndItsMode) {
    for (const Replacement& r : Replacements()) {
        for (const Shape shape : AllShapes) {
            SCOPED_TRACE(std::string(r.name) + " shape " + std::to_string(int(shape)));
            InstallationFixture fx;
            fx.Write(Source, CopiedBytes);
            const Target t = MakeTarget(fx, shape, "old text\r\n");
            // A move across devices is a copy: what it was made from stays for its owner to delete.
            const bool sourceLeft = !r.moves || !OnOneDevice(fx.Host(Source), t.realHost);
            r.run(fx.Files(), t.path);
            ExpectTarget(fx, t, r.newBytes, sourceLeft);
        }
    }
}

// A fault at any step of a copy or a whole-file rewrite leaves the old file as it was (its link
// and mode included), nothing half written beside it, and an error that names the file (as the
// system knows it, never as the host does) and the reason.
TEST(FileSystem, AFaultAtAnyStepOfACopyOrRewriteKeepsTheOldFile) {
    const QByteArray oldBytes("old text\r\n");
    const FileStep steps[] = {FileStep::Read,  FileStep::Open, FileStep::Write,
                              FileStep::Close, FileStep::Sync, FileStep::Replace};
    for (const Replacement& r : Replacements()) {
        for (const FileStep step : steps) {
            const bool copy = QByteArray(r.name) == "copy";
            if (step == FileStep::Read && !copy)
                continue; // a rewrite reads nothing
            // A move on one device only forces its new text to the disk and renames it.
            if (r.moves && step != FileStep::Sync && step != FileStep::Replace)
                continue;
            for (const Shape shape : AllShapes) {
                if (r.moves && shape == Shape::LinkElsewhere)
                    continue; // a copy, as above
                SCOPED_TRACE(std::string(r.name) + " step " + std::to_string(int(step)) + " shape " +
                             std::to_string(int(shape)));
                InstallationFixture fx;
                FileSystem& files = fx.Files();
                fx.Write(Source, CopiedBytes);
                const Target t = MakeTarget(fx, shape, oldBytes);
                kestrova::testing::FaultInjector faults(files);
                // A move forces the file it was given, the copy's own text goes beside the target.
                const bool onSource = step == FileStep::Read || (r.moves && step == FileStep::Sync);
                const QString faultPath = onSource ? Source : t.path;
                faults.Fail(step, LastName(faultPath), ENOSPC, copy && step == FileStep::Write ? 2 : 1);
                const auto error = kestrova::testing::Thrown<SystemError>([&] { r.run(files, t.path); });
                EXPECT_EQ(faults.Fired(), 1);
                ASSERT_TRUE(error);
                EXPECT_EQ(error->subject(), faultPath);
                EXPECT_FALSE(error->text().contains(fx.Root())) << error->text().toStdString();
                ExpectTarget(fx, t, oldBytes);
            }
        }
    }

    // Deleting and renaming fail as a whole.
    for (const FileStep step : {FileStep::Delete, FileStep::Rename}) {
        InstallationFixture fx;
        FileSystem& files = fx.Files();
        const QString target = QStringLiteral("C:\\Jobs\\TARGET.BIN");
        fx.Write(target, oldBytes);
        kestrova::testing::FaultInjector faults(files);
        faults.Fail(step, QStringLiteral("TARGET.BIN"));
        if (step == FileStep::Delete)
            EXPECT_THROW(files.Delete(target), SystemError);
        else
            EXPECT_THROW(files.Rename(target, QStringLiteral("C:\\Jobs\\other")), SystemError);
        EXPECT_EQ(fx.Read(target), oldBytes);
    }
}

// A new file need not be on the disk while the text it was made from is still there, but it must
// be before anything is deleted or renamed: its source may be what goes. Each new file is forced
// to the disk once, and a fault there stops the delete or rename with the source whole.
TEST(FileSystem, NewFilesReachTheDiskBeforeAnythingIsDeletedOrRenamed) {
    const QString parts = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\");
    const std::function<void(FileSystem&)> operations[] = {
        [&](FileSystem& f) { f.Delete(parts + "X.prg"); },
        [&](FileSystem& f) { f.Rename(parts + "X.prg", parts + "Y.prg"); },
    };
    for (const auto& operation : operations) {
        InstallationFixture fx;
        FileSystem& files = fx.Files();
        const QByteArray source = fx.Read(parts + "X.prg");
        {
            TextWriter writer(files, QStringLiteral("C:\\Jobs\\Made.tmp"), TextWriter::Mode::Create);
            writer.WriteBytes(source);
            writer.Close();
        }
        kestrova::testing::FaultInjector faults(files);
        faults.Fail(FileStep::Sync, QStringLiteral("Made.tmp"));
        EXPECT_THROW(operation(files), DiskFullError);
        EXPECT_EQ(fx.Read(parts + "X.prg"), source) << "the source stays while its copy is not on the disk";

        faults.Fail(FileStep::Sync, QString(), ENOSPC, 1000); // counts, never fails
        operation(files);
        EXPECT_EQ(faults.Seen(), 1) << "the new file forced once";
        files.Delete(QStringLiteral("C:\\Jobs\\Made.tmp"));
        EXPECT_EQ(faults.Seen(), 1) << "and not again";
    }
}
