#pragma once

#include "platform/DeviceMap.h"
#include "platform/DirectoryListings.h"
#include "platform/DiskWrites.h"
#include "platform/Errors.h"
#include "platform/FileStamp.h"
#include "platform/SystemPath.h"

#include <QMap>
#include <QString>
#include <QStringList>
#include <filesystem>
#include <functional>
#include <optional>
#include <utility>

namespace kestrova {

enum class EntryKinds { Files = 1, Directories = 2, Both = 3 };

// The steps of the file operations at which the host can fail: opening a file to read it,
// opening one to write it (a copy's or a rewrite's new text included), each write, the flush and
// close of a written file, forcing a new text onto the disk, putting a complete new text in
// place, and the single operations (a second name for a file among them).
enum class FileStep {
    Read,
    Open,
    Write,
    Close,
    Sync,
    Replace,
    Delete,
    Rename,
    MakeDirectory,
    RemoveDirectory,
    Link
};

// The host file layer: the one place where the system's paths ("C:\Kestrova\Data\M1.cms")
// become host paths. Drives come from the device map; each name is looked up as spelled and,
// when missing, by the entry that matches ignoring letter case, so files written by the
// suite's other programs in any case are found. New files and directories get the spelling
// asked for. Every error names the system path and the reason.
//
// One instance per installation: it also holds the current drive and directory, so that
// several installations can live in one process.
class FileSystem {
public:
    FileSystem(DeviceMap devices, const QString& startHostDir);
    // The installation started in startHostDir: its "Devices.cfg" is read from there.
    [[nodiscard]] static FileSystem AtStartDirectory(const QString& startHostDir);

    [[nodiscard]] const DeviceMap& Devices() const { return m_devices; }

    // --- Paths --------------------------------------------------------------------------
    // The full system path of p, relative names taken from the current directory.
    [[nodiscard]] QString FullPath(const QString& p) const;
    // The host path p stands for; existing components in their spelling on disk, missing ones
    // as asked. Empty when the drive is not mapped.
    [[nodiscard]] QString HostPath(const QString& p) const;
    // The system path of a host path: the mapped drive whose root holds it (the deepest one).
    [[nodiscard]] QString SystemPathOfHost(const QString& hostPath) const;

    // --- Questions ------------------------------------------------------------------------
    [[nodiscard]] bool Exists(const QString& p) const; // file or directory
    [[nodiscard]] bool IsDirectory(const QString& p) const;
    [[nodiscard]] bool IsFile(const QString& p) const;
    [[nodiscard]] qint64 Length(const QString& p) const; // FileNotFound when there is no such file
    // The stamp of a file (FileStamp.h) and the host path it was taken at; nothing when the file
    // is missing or the host keeps no such times.
    [[nodiscard]] std::optional<std::pair<FileStamp, QString>> Stamp(const QString& p) const;

    // Names of the entries of a directory that match the patterns ("*.drw;*.prg"), in name
    // order ignoring case. A missing directory gives an empty list.
    [[nodiscard]] QStringList List(const QString& directory, const QString& patterns, EntryKinds kinds) const;
    // The same for a path whose last name is the pattern ("C:\Jobs\PUNCH1\*.*").
    [[nodiscard]] QStringList Find(const QString& pathPattern, EntryKinds kinds) const;

    // --- Drives -----------------------------------------------------------------------------
    // Mapped, and its host directory exists and can be listed.
    [[nodiscard]] bool DriveReady(QChar letter) const;
    // The kind of a mapped drive; nothing for a letter the map does not name.
    [[nodiscard]] std::optional<DriveKind> DriveType(QChar letter) const;
    // Every mapped drive in letter order.
    [[nodiscard]] QList<DriveMapping> Drives() const { return m_devices.Drives(); }

    // --- Operations -------------------------------------------------------------------------
    // Byte-exact copy; an existing target is replaced whole, never left half written, and only
    // once the new text is on the disk. A new target reaches the disk before anything is deleted.
    void Copy(const QString& source, const QString& target);
    // The complete text of source takes the place of the existing file target, which keeps its
    // link and mode and holds its old text until the new one is on the disk. On the same device
    // source is renamed onto it and is gone; elsewhere it is copied and stays. Either way a
    // failure leaves target as it was and source whole.
    void MoveOver(const QString& source, const QString& target);
    // Every new file written so far is forced to the disk first: the text it was made from may
    // be what goes.
    void Delete(const QString& p);
    // Renames a file or directory; the new name must not exist yet.
    void Rename(const QString& from, const QString& to);
    // Gives the file existing a second name, newName, on the same text: no byte is copied, and
    // the text stays under newName when existing is later replaced or deleted (both rename a new
    // file over it or remove the name; neither writes into the old one). False, with nothing
    // done, where the host cannot: another device, a file system without links, too many links,
    // or existing is itself a link.
    [[nodiscard]] bool Link(const QString& existing, const QString& newName);
    // Forces a file (its text and its name) to the disk now, whatever else waits to be forced.
    void ForceToDisk(const QString& p);
    // The same for several files at once: each file, then each of their directories once.
    void ForceToDisk(const QStringList& paths);
    void MakeDirectory(const QString& p);
    // The seeding of an installation's directories: makes p unless something of that name is there.
    void MakeDirectoryIfMissing(const QString& p);
    void RemoveDirectory(const QString& p);
    void ChangeDrive(const QString& drive);
    void ChangeDirectory(const QString& p);
    [[nodiscard]] QString CurrentDirectory() const;

    // --- For the text and record files of this layer -------------------------------------
    struct Resolved {
        QString full; // the full system path
        QString host; // the host path ("" when the drive is not mapped)
        bool mapped = false;
        bool exists = false;
        bool isDirectory = false;
        bool parentExists = false;
    };
    [[nodiscard]] Resolved Resolve(const QString& p) const;
    // Raises the error that the host's errno value stands for, naming the system path.
    [[noreturn]] void ThrowFromErrno(int error, const Resolved& where) const;
    // The error for opening a file that is not there: file, path, drive not ready or unknown.
    [[noreturn]] void ThrowMissing(const Resolved& where) const;

    // --- Faults ----------------------------------------------------------------------------
    // A disk that fills up or a drive that is pulled out cannot be staged on demand, and
    // permissions do not stop a privileged user: the hook is asked before every step with the
    // full system path concerned and answers 0 to go on, or the host's error number (ENOSPC,
    // EIO, ...) to fail that step exactly as the host would.
    using FaultHook = std::function<int(FileStep step, const QString& fullPath)>;
    void SetFaultHook(FaultHook hook) { m_faultHook = std::move(hook); }
    // The host error number the hook gives for this step, 0 for none.
    [[nodiscard]] int InjectedFault(FileStep step, const QString& fullPath) const {
        return m_faultHook ? m_faultHook(step, fullPath) : 0;
    }
    // Raises the fault the hook gives for this step, if any.
    void CheckFault(FileStep step, const Resolved& where) const;

    // --- New files not yet on the disk (DiskWrites.h) ----------------------------------------
    // A file this layer has just written under a new name (host path as opened).
    void RememberUnsettled(const std::string& hostFile, const QString& fullPath) {
        m_unsettled.Add(hostFile, fullPath);
    }
    // Forces every such file to the disk (before something is deleted or renamed).
    void SettleWrites() { m_unsettled.Settle(*this); }
    // A file on a removable drive is forced to the disk as soon as it is written, or within a
    // batch as the batch ends: the operator takes the floppy or stick out once the work is done.
    [[nodiscard]] bool OnRemovableDrive(const QString& fullPath) const {
        return DriveType(SystemPath::Parse(fullPath).drive) == DriveKind::Removable;
    }

    // --- Batches of work on many files (FileBatch.h) ----------------------------------------
    // Within one, a file made under a new name waits to be forced to the disk with the rest,
    // and directories are read once (DirectoryListings.h).
    [[nodiscard]] bool Batching() const { return m_batches > 0; }
    // This layer has just made, replaced or removed the entry at hostPath.
    void EntryChanged(const std::filesystem::path& hostPath);

private:
    friend class FileBatch;
    void BeginBatch();
    void EndBatch();
    [[nodiscard]] DirectoryListings* Listings() const { return m_batches > 0 ? &m_listings : nullptr; }

    struct FromTo {
        Resolved from;
        Resolved to;
    };
    // Source and target of a copy or move, refused with the error naming the file where the one
    // is missing or a directory, or the other cannot be written.
    [[nodiscard]] FromTo ResolveFromTo(const QString& source, const QString& target) const;

    DeviceMap m_devices;
    QChar m_currentDrive;
    QMap<QChar, QString> m_currentDirs; // per drive, a full system path
    FaultHook m_faultHook;
    UnsettledFiles m_unsettled;
    int m_batches = 0;
    mutable DirectoryListings m_listings;
};

} // namespace kestrova
