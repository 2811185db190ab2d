#include "platform/FileSystem.h"

#include "platform/Blanks.h"
#include "platform/FileReplacement.h"
#include "platform/HostPath.h"
#include "platform/Wildcard.h"

#include <QDir>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#ifndef _WIN32
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace kestrova {

namespace fs = std::filesystem;
using host::FromFs;
using host::ToFs;

namespace {

inline char FoldAscii(char c) {
    return (c >= 'a' && c <= 'z') ? char(c - 32) : c;
}

std::string FoldedKey(const std::string& name) {
    std::string key(name);
    for (char& c : key)
        c = FoldAscii(c);
    return key;
}

bool EqualsIgnoringAsciiCase(const char* a, const std::string& b) {
    size_t i = 0;
    for (; a[i] != '\0'; ++i)
        if (i >= b.size() || FoldAscii(a[i]) != FoldAscii(b[i]))
            return false;
    return i == b.size();
}

// Name order as the system's listings give it: ignoring case, exact spelling breaking ties.
bool NameOrder(const std::string& keyA, const std::string& nameA, const std::string& keyB,
               const std::string& nameB) {
    if (keyA != keyB)
        return keyA < keyB;
    return nameA < nameB;
}

bool EntryExists(const fs::path& p) {
    std::error_code ec;
    return fs::exists(fs::status(p, ec));
}

// The entry of dir whose name matches wanted ignoring ASCII case, the first in name order.
std::optional<std::string> FindIgnoringCase(const fs::path& dir, const std::string& wanted,
                                            DirectoryListings* listings) {
    const std::vector<DirectoryListings::Entry>* entries = listings ? listings->Of(dir.string()) : nullptr;
#ifndef _WIN32
    if (!entries) {
        // Read straight from the directory stream: this runs for every component spelled in
        // another case, so it must not allocate per entry.
        DIR* stream = ::opendir(dir.c_str());
        if (!stream)
            return std::nullopt;
        std::optional<std::string> best;
        while (const dirent* entry = ::readdir(stream)) {
            const char* name = entry->d_name;
            if (!EqualsIgnoringAsciiCase(name, wanted))
                continue;
            if (!best || std::strcmp(name, best->c_str()) < 0)
                best = std::string(name);
        }
        ::closedir(stream);
        return best;
    }
#else
    std::vector<DirectoryListings::Entry> read;
    if (!entries) {
        if (!ReadDirectoryEntries(dir.string(), read))
            return std::nullopt;
        entries = &read;
    }
#endif
    const std::string* best = nullptr;
    for (const DirectoryListings::Entry& e : *entries)
        if (EqualsIgnoringAsciiCase(e.name.c_str(), wanted) && (!best || e.name < *best))
            best = &e.name;
    return best ? std::optional<std::string>(*best) : std::nullopt;
}

bool Writable(const fs::path& p) {
    std::error_code ec;
    const auto perms = fs::status(p, ec).permissions();
    return !ec && (perms & fs::perms::owner_write) != fs::perms::none;
}

} // namespace

FileSystem::FileSystem(DeviceMap devices, const QString& startHostDir) : m_devices(std::move(devices)) {
    const QString start = SystemPathOfHost(QDir(startHostDir).absolutePath());
    const SystemPath parsed = SystemPath::Parse(start);
    m_currentDrive = parsed.drive.isNull() ? QChar('Z') : parsed.drive;
    m_currentDirs.insert(m_currentDrive, start);
}

FileSystem FileSystem::AtStartDirectory(const QString& startHostDir) {
    return FileSystem(DeviceMap::Load(startHostDir), startHostDir);
}

QString FileSystem::FullPath(const QString& p) const {
    const QString text = FromHostNotation(TrimBlanks(p));
    SystemPath parsed = SystemPath::Parse(text);
    if (parsed.drive.isNull())
        parsed.drive = m_currentDrive;
    if (!parsed.rooted) {
        const QString base = m_currentDirs.value(parsed.drive, QString(parsed.drive) + QStringLiteral(":\\"));
        SystemPath combined = SystemPath::Parse(base + u'\\' + parsed.components.join(u'\\'));
        combined.drive = parsed.drive;
        combined.rooted = true;
        return combined.Text();
    }
    return parsed.Text();
}

FileSystem::Resolved FileSystem::Resolve(const QString& p) const {
    Resolved r;
    r.full = FullPath(p);
    const SystemPath parsed = SystemPath::Parse(r.full);
    const auto mapping = m_devices.Drive(parsed.drive);
    if (!mapping)
        return r;
    r.mapped = true;
    fs::path current = ToFs(mapping->hostRoot);
    const int count = int(parsed.components.size());
    // Most paths are spelled as they are on disk: one look settles them.
    fs::path spelled = current;
    for (const QString& name : parsed.components)
        spelled /= ToFs(name);
    std::error_code statError;
    const fs::file_status status = fs::status(spelled, statError);
    if (fs::exists(status)) {
        r.exists = true;
        r.parentExists = true;
        r.isDirectory = fs::is_directory(status);
        r.host = FromFs(spelled);
        return r;
    }
    // Most missing names are new files in a directory spelled as it is on disk: only the last
    // name needs looking for, and it is known not to be there as spelled.
    int from = 0;
    bool lastSpelledMissing = false;
    std::error_code parentError;
    if (count > 1 && fs::is_directory(spelled.parent_path(), parentError)) {
        current = spelled.parent_path();
        from = count - 1;
        lastSpelledMissing = true;
    } else if (!EntryExists(current)) {
        r.host = FromFs(spelled); // the drive's directory is not there
        return r;
    }
    for (int i = from; i < count; ++i) {
        const fs::path wanted = ToFs(parsed.components.at(i));
        fs::path candidate = current / wanted;
        if ((i == from && lastSpelledMissing) || !EntryExists(candidate)) {
            if (const auto match = FindIgnoringCase(current, wanted.string(), Listings()))
                candidate = current / *match;
            else {
                r.parentExists = (i == count - 1) && (lastSpelledMissing || fs::is_directory(current));
                for (int j = i + 1; j < count; ++j)
                    candidate /= ToFs(parsed.components.at(j));
                r.host = FromFs(candidate);
                return r;
            }
        }
        current = std::move(candidate);
    }
    std::error_code ec;
    r.exists = true;
    r.parentExists = true;
    r.isDirectory = fs::is_directory(current, ec);
    r.host = FromFs(current);
    return r;
}

QString FileSystem::HostPath(const QString& p) const {
    return Resolve(p).host;
}

QString FileSystem::SystemPathOfHost(const QString& hostPath) const {
    const QString clean = QDir::cleanPath(QDir(hostPath).absolutePath());
    const DriveMapping* best = nullptr;
    const QList<DriveMapping> drives = m_devices.Drives();
    for (const DriveMapping& d : drives) {
        const QString root = d.hostRoot;
        const bool inside = clean == root || root == QLatin1String("/") ||
                            clean.startsWith(root.endsWith(u'/') ? root : root + u'/');
        if (inside && (!best || root.size() > best->hostRoot.size()))
            best = &d;
    }
    if (!best)
        return FromHostNotation(clean);
    QString rest = clean.mid(best->hostRoot.size());
    rest.replace(u'/', u'\\');
    if (!rest.startsWith(u'\\'))
        rest.prepend(u'\\');
    return QString(best->letter) + u':' + rest;
}

bool FileSystem::Exists(const QString& p) const {
    return Resolve(p).exists;
}

bool FileSystem::IsDirectory(const QString& p) const {
    const Resolved r = Resolve(p);
    return r.exists && r.isDirectory;
}

bool FileSystem::IsFile(const QString& p) const {
    const Resolved r = Resolve(p);
    return r.exists && !r.isDirectory;
}

std::optional<std::pair<FileStamp, QString>> FileSystem::Stamp(const QString& p) const {
    const Resolved r = Resolve(p);
    FileStamp stamp;
    if (!r.exists || r.isDirectory || !ReadFileStamp(ToFs(r.host).string(), stamp))
        return std::nullopt;
    return std::pair{stamp, r.host};
}

qint64 FileSystem::Length(const QString& p) const {
    const Resolved r = Resolve(p);
    if (!r.exists || r.isDirectory)
        ThrowMissing(r);
    std::error_code ec;
    const auto size = fs::file_size(ToFs(r.host), ec);
    if (ec)
        ThrowFromErrno(ec.value(), r);
    return qint64(size);
}

QStringList FileSystem::List(const QString& directory, const QString& patterns, EntryKinds kinds) const {
    const Resolved r = Resolve(directory);
    if (!r.exists || !r.isDirectory)
        return {};
    const WildcardSet wildcards(patterns);
    if (wildcards.IsEmpty())
        return {};
    struct Entry {
        std::string key;
        std::string bytes;
        QString name;
    };
    std::vector<Entry> entries;
    const bool wantFiles = int(kinds) & int(EntryKinds::Files);
    const bool wantDirs = int(kinds) & int(EntryKinds::Directories);
    const auto consider = [&](const std::string& name, bool isDir) {
        // Names starting with a dot are the host's hidden files (and this layer's own
        // half-written copies): the system never lists them.
        if (name.empty() || name[0] == '.')
            return;
        if ((isDir && !wantDirs) || (!isDir && !wantFiles))
            return;
        QString decoded = QString::fromUtf8(name.data(), qsizetype(name.size()));
        if (!wildcards.Matches(decoded))
            return;
        entries.push_back({FoldedKey(name), name, std::move(decoded)});
    };
    std::vector<DirectoryListings::Entry> read;
    const std::vector<DirectoryListings::Entry>* found =
        Listings() ? Listings()->Of(ToFs(r.host).string()) : nullptr;
    if (!found) {
        if (!ReadDirectoryEntries(ToFs(r.host).string(), read))
            return {};
        found = &read;
    }
    for (const DirectoryListings::Entry& e : *found)
        consider(e.name, e.isDirectory);
    std::sort(entries.begin(), entries.end(),
              [](const Entry& a, const Entry& b) { return NameOrder(a.key, a.bytes, b.key, b.bytes); });
    QStringList names;
    names.reserve(qsizetype(entries.size()));
    for (Entry& e : entries)
        names << std::move(e.name);
    return names;
}

QStringList FileSystem::Find(const QString& pathPattern, EntryKinds kinds) const {
    const QString full = FullPath(pathPattern);
    const qsizetype cut = full.lastIndexOf(u'\\');
    return List(full.left(cut + 1), full.mid(cut + 1), kinds);
}

bool FileSystem::DriveReady(QChar letter) const {
    const auto mapping = m_devices.Drive(letter);
    if (!mapping)
        return false;
    std::error_code ec;
    fs::directory_iterator it(ToFs(mapping->hostRoot), ec);
    return !ec;
}

std::optional<DriveKind> FileSystem::DriveType(QChar letter) const {
    const auto mapping = m_devices.Drive(letter);
    if (!mapping)
        return std::nullopt;
    return mapping->kind;
}

void FileSystem::ThrowMissing(const Resolved& where) const {
    if (!where.mapped)
        throw DeviceUnavailableError(where.full);
    const auto mapping = m_devices.Drive(SystemPath::Parse(where.full).drive);
    if (mapping && !DriveReady(mapping->letter))
        throw DiskNotReadyError(where.full);
    if (where.parentExists)
        throw FileNotFoundError(where.full);
    throw PathNotFoundError(where.full);
}

void FileSystem::ThrowFromErrno(int error, const Resolved& where) const {
    switch (error) {
    case ENOENT:
        ThrowMissing(where);
    case ENOTDIR:
        throw PathNotFoundError(where.full);
    case EACCES:
    case EPERM:
    case EROFS:
        throw PermissionDeniedError(where.full);
    case ENOSPC:
#ifdef EDQUOT
    case EDQUOT:
#endif
        throw DiskFullError(where.full);
    case EEXIST:
        throw FileAlreadyExistsError(where.full);
    case EIO:
        throw DeviceIoError(where.full);
    case ENAMETOOLONG:
    case EINVAL:
        throw BadFileNameError(where.full);
    default:
        throw PathFileAccessError(where.full, QString::fromLocal8Bit(std::strerror(error)));
    }
}

void FileSystem::CheckFault(FileStep step, const Resolved& where) const {
    if (const int error = InjectedFault(step, where.full))
        ThrowFromErrno(error, where);
}

FileSystem::FromTo FileSystem::ResolveFromTo(const QString& source, const QString& target) const {
    FromTo r{Resolve(source), Resolve(target)};
    if (!r.from.exists)
        ThrowMissing(r.from);
    if (r.from.isDirectory)
        throw PathFileAccessError(r.from.full, QStringLiteral("is a directory"));
    if (!r.to.exists && !r.to.parentExists)
        ThrowMissing(r.to);
    if (r.to.exists && r.to.isDirectory)
        throw PathFileAccessError(r.to.full, QStringLiteral("is a directory"));
    if (r.to.exists && !Writable(ToFs(r.to.host)))
        throw PermissionDeniedError(r.to.full);
    return r;
}

void FileSystem::Copy(const QString& source, const QString& target) {
    const auto [from, to] = ResolveFromTo(source, target);
    CheckFault(FileStep::Read, from);
    const int in = ::open(ToFs(from.host).c_str(), O_RDONLY | O_CLOEXEC);
    if (in < 0)
        ThrowFromErrno(errno, from);
    struct Closer {
        int fd;
        ~Closer() { ::close(fd); }
    } closer{in};
    FileReplacement out(*this, to);
    out.CopyFrom(in, from);
    out.Commit();
}

void FileSystem::MoveOver(const QString& source, const QString& target) {
    const auto [from, to] = ResolveFromTo(source, target);
    // The new text is forced to the disk here, with the old file's mode; every other new file
    // before the rename, as before any.
    m_unsettled.Forget(ToFs(from.host).string());
    SettleWrites();
    if (!to.exists || !MoveIntoPlace(*this, from, to))
        Copy(source, target);
}

void FileSystem::Delete(const QString& p) {
    const Resolved r = Resolve(p);
    if (!r.exists)
        ThrowMissing(r);
    if (r.isDirectory)
        throw FileNotFoundError(r.full, QStringLiteral("is a directory"));
    if (!Writable(ToFs(r.host)))
        throw PermissionDeniedError(r.full);
    // What goes need not reach the disk; what was copied from it must.
    m_unsettled.Forget(ToFs(r.host).string());
    SettleWrites();
    CheckFault(FileStep::Delete, r);
    std::error_code ec;
    fs::remove(ToFs(r.host), ec);
    EntryChanged(ToFs(r.host));
    if (ec)
        ThrowFromErrno(ec.value(), r);
}

void FileSystem::Rename(const QString& from, const QString& to) {
    const Resolved source = Resolve(from);
    if (!source.exists)
        ThrowMissing(source);
    const Resolved target = Resolve(to);
    const bool sameEntry = target.exists && target.host == source.host;
    if (target.exists && !sameEntry)
        throw FileAlreadyExistsError(target.full);
    if (!target.exists && !target.parentExists)
        ThrowMissing(target);
    // The new name is spelled as asked, also when only its letter case changes.
    const QStringList targetNames = SystemPath::Parse(target.full).components;
    if (targetNames.isEmpty())
        throw BadFileNameError(target.full);
    const fs::path targetPath = ToFs(target.host).parent_path() / ToFs(targetNames.last());
    SettleWrites();
    CheckFault(FileStep::Rename, source);
    std::error_code ec;
    fs::rename(ToFs(source.host), targetPath, ec);
    if (source.isDirectory && m_batches > 0)
        m_listings.Clear(); // every listing beneath it has another path now
    EntryChanged(ToFs(source.host));
    EntryChanged(targetPath);
    if (ec == std::errc::cross_device_link && !source.isDirectory) {
        Copy(from, to);
        Delete(from);
        return;
    }
    if (ec)
        ThrowFromErrno(ec.value(), target);
}

bool FileSystem::Link(const QString& existing, const QString& newName) {
    const Resolved source = Resolve(existing);
    if (!source.exists)
        ThrowMissing(source);
    if (source.isDirectory)
        throw PathFileAccessError(source.full, QStringLiteral("is a directory"));
    const Resolved target = Resolve(newName);
    if (target.exists)
        throw FileAlreadyExistsError(target.full);
    if (!target.parentExists)
        ThrowMissing(target);
    std::error_code ec;
    // A second name for a link would be a second link, whose text changes with the file it names
    // (or which names nothing from another directory): the text itself is copied instead.
    if (fs::is_symlink(fs::symlink_status(ToFs(source.host), ec)))
        return false;
    if (const int fault = InjectedFault(FileStep::Link, target.full))
        ec = std::error_code(fault, std::generic_category());
    else
        fs::create_hard_link(ToFs(source.host), ToFs(target.host), ec);
    if (!ec) {
        EntryChanged(ToFs(target.host));
        return true;
    }
    if (ec == std::errc::cross_device_link || ec == std::errc::operation_not_permitted ||
        ec == std::errc::operation_not_supported || ec == std::errc::too_many_links ||
        ec == std::errc::function_not_supported)
        return false;
    ThrowFromErrno(ec.value(), target);
}

void FileSystem::ForceToDisk(const QString& p) {
    ForceToDisk(QStringList{p});
}

void FileSystem::ForceToDisk(const QStringList& paths) {
    std::vector<Resolved> files;
    files.reserve(std::size_t(paths.size()));
    for (const QString& p : paths) {
        files.push_back(Resolve(p));
        const Resolved& r = files.back();
        if (!r.exists)
            ThrowMissing(r);
        m_unsettled.Forget(ToFs(r.host).string());
    }
#ifndef _WIN32
    const auto force = [this](const fs::path& host, int flags, const Resolved& r) {
        const int fd = ::open(host.c_str(), flags | O_CLOEXEC);
        if (fd < 0)
            ThrowFromErrno(errno, r);
        const int error = ::fsync(fd) == 0 ? 0 : errno;
        ::close(fd);
        if (error != 0)
            ThrowFromErrno(error, r);
    };
    std::vector<fs::path> directories;
    for (const Resolved& r : files) {
        CheckFault(FileStep::Sync, r);
        const fs::path host = ToFs(r.host);
        force(host, O_RDONLY, r);
        if (std::find(directories.begin(), directories.end(), host.parent_path()) == directories.end())
            directories.push_back(host.parent_path());
    }
    // The names last: one force of a directory takes every new name in it along.
    for (const fs::path& dir : directories)
        force(dir, O_RDONLY | O_DIRECTORY, files.front());
#else
    for (const Resolved& r : files)
        CheckFault(FileStep::Sync, r);
#endif
}

void FileSystem::MakeDirectory(const QString& p) {
    const Resolved r = Resolve(p);
    if (r.exists)
        throw PathFileAccessError(r.full, QStringLiteral("already exists"));
    if (!r.parentExists)
        ThrowMissing(r);
    CheckFault(FileStep::MakeDirectory, r);
    std::error_code ec;
    fs::create_directory(ToFs(r.host), ec);
    EntryChanged(ToFs(r.host));
    if (ec)
        ThrowFromErrno(ec.value(), r);
}

void FileSystem::MakeDirectoryIfMissing(const QString& p) {
    if (!Exists(p))
        MakeDirectory(p);
}

void FileSystem::RemoveDirectory(const QString& p) {
    const Resolved r = Resolve(p);
    if (!r.exists || !r.isDirectory) {
        if (!r.mapped)
            throw DeviceUnavailableError(r.full);
        throw PathNotFoundError(r.full);
    }
    CheckFault(FileStep::RemoveDirectory, r);
    std::error_code ec;
    fs::remove(ToFs(r.host), ec);
    EntryChanged(ToFs(r.host));
    if (ec == std::errc::directory_not_empty || ec == std::errc::file_exists)
        throw PathFileAccessError(r.full, QStringLiteral("directory not empty"));
    if (ec)
        ThrowFromErrno(ec.value(), r);
}

void FileSystem::ChangeDrive(const QString& drive) {
    const QString text = TrimBlanks(drive);
    if (text.isEmpty())
        return;
    const QChar letter = text.at(0).toUpper();
    const QString root = QString(letter) + QStringLiteral(":\\");
    if (!m_devices.Drive(letter))
        throw DeviceUnavailableError(root);
    if (!DriveReady(letter))
        throw DiskNotReadyError(root);
    m_currentDrive = letter;
}

void FileSystem::ChangeDirectory(const QString& p) {
    const Resolved r = Resolve(p);
    if (!r.exists || !r.isDirectory) {
        if (!r.mapped)
            throw DeviceUnavailableError(r.full);
        throw PathNotFoundError(r.full);
    }
    m_currentDirs.insert(SystemPath::Parse(r.full).drive, r.full);
}

void FileSystem::EntryChanged(const fs::path& hostPath) {
    if (m_batches > 0)
        m_listings.Changed(hostPath);
}

void FileSystem::BeginBatch() {
    ++m_batches;
}

void FileSystem::EndBatch() {
    if (--m_batches == 0)
        m_listings.Clear();
}

QString FileSystem::CurrentDirectory() const {
    return m_currentDirs.value(m_currentDrive, QString(m_currentDrive) + QStringLiteral(":\\"));
}

} // namespace kestrova
