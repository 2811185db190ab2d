#include "platform/FileBatch.h"

#include "FaultInjector.h"
#include "InstallationFixture.h"
#include "QtPrinters.h"
#include "Thrown.h"

#include <QFile>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace kestrova;
using kestrova::testing::FaultInjector;
using kestrova::testing::InstallationFixture;

namespace {

const QString Jobs = QStringLiteral("C:\\Jobs\\");

// Moves a directory's time of change on, as the host's clock would by the next look: a change
// made in the same instant as the last look cannot be told by its time.
void Tick(const QString& hostDir) {
    struct stat info {};
    ASSERT_EQ(::stat(QFile::encodeName(hostDir).constData(), &info), 0);
    timespec times[2] = {info.st_atim, info.st_mtim};
    times[1].tv_sec += 1;
    ASSERT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(hostDir).constData(), times, 0), 0);
}

} // namespace

// Within a batch, new files are forced to the disk together as it finishes; a file that
// replaces an old text is forced before it takes its place, as outside; a delete forces what
// waits first. A file that cannot be forced is named, and the next batch forces it again.
TEST(FileBatch, NewFilesReachTheDiskAsTheBatchEndsAndReplacementsAtOnce) {
    InstallationFixture fx;
    FileSystem& files = fx.Files();
    fx.Write(Jobs + "Source.prg", "N10 G01\r\n");
    fx.Write(Jobs + "Old.prg", "old\r\n");
    FaultInjector faults(files);
    faults.Fail(FileStep::Sync, QStringLiteral("New.prg"), EIO, 1);
    {
        FileBatch batch(files);
        files.Copy(Jobs + "Source.prg", Jobs + "New.prg");
        EXPECT_EQ(faults.Seen(), 0) << "a new file waits for the end";
        EXPECT_EQ(fx.Read(Jobs + "New.prg"), "N10 G01\r\n");
        const auto error = kestrova::testing::Thrown<SystemError>([&] { batch.Finish(); });
        ASSERT_TRUE(error) << "the failed force went unnoticed";
        EXPECT_EQ(error->subject(), Jobs + "New.prg");
    }
    faults.Fail(FileStep::Sync, QString(), ENOSPC, 1000); // counts, never fails
    {
        FileBatch batch(files);
        files.Copy(Jobs + "Source.prg", Jobs + "Old.prg");
        EXPECT_EQ(faults.Seen(), 2) << "the replacement at once, and the new file left from before with it";
        files.Copy(Jobs + "Source.prg", Jobs + "Other.prg");
        files.Delete(Jobs + "Source.prg");
        EXPECT_EQ(faults.Seen(), 3) << "a delete forces what waits";
        batch.Finish();
        EXPECT_EQ(faults.Seen(), 3);
    }
    // A batch left by an error forces what it made as it goes.
    {
        FileBatch batch(files);
        files.Copy(Jobs + "Other.prg", Jobs + "Third.prg");
    }
    EXPECT_EQ(faults.Seen(), 4);
}

// A batch reads a directory once and follows its own changes; another program's change shows at
// the next look; letter case is ignored as ever. The same lookups after each step, in and out of
// a batch, must agree.
TEST(FileBatch, ListingsFollowTheBatchsOwnChangesAndAnotherProgramsAlike) {
    InstallationFixture fx;
    FileSystem& files = fx.Files();
    const QString dir = Jobs + "Out\\";
    files.MakeDirectory(dir);
    fx.Write(Jobs + "Source.prg", "N10\r\n");
    // The same installation seen without a batch: what every look must agree with.
    FileSystem truth(files.Devices(), fx.Root());
    const auto look = [&](FileSystem& f) {
        return QStringList{f.List(dir, QStringLiteral("*.*"), EntryKinds::Both).join(u','),
                           f.HostPath(dir + "part1.PRG").section(u'/', -1),
                           f.IsFile(dir + "PART2.prg") ? "2" : "-"};
    };
    const std::function<void()> steps[] = {
        [&] { files.Copy(Jobs + "Source.prg", dir + "Part1.prg"); },
        [&] { files.Rename(dir + "PART1.PRG", dir + "Part2.prg"); },
        [&] { files.MakeDirectory(dir + "Sub"); },
        [&] {
            QFile other(fx.Host(dir) + "/part1.prg"); // another program's file
            ASSERT_TRUE(other.open(QIODevice::WriteOnly));
            Tick(fx.Host(dir));
        },
        [&] { files.Delete(dir + "PART2.PRG"); },
        [&] { files.RemoveDirectory(dir + "SUB"); },
    };
    FileBatch batch(files);
    for (std::size_t i = 0; i < std::size(steps); ++i) {
        SCOPED_TRACE(i);
        (void)look(files); // read before the step, to be followed through it
        steps[i]();
        EXPECT_EQ(look(files), look(truth));
    }
    EXPECT_EQ(look(files), (QStringList{"part1.prg", "part1.prg", "-"}));
    batch.Finish();
}
