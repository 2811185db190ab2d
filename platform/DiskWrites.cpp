#include "platform/DiskWrites.h"

#include "platform/FileSystem.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <set>
#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace kestrova {

void UnsettledFiles::Add(const std::string& hostPath, const QString& fullPath) {
    Forget(hostPath);
    m_files.push_back({hostPath, fullPath});
}

void UnsettledFiles::Forget(const std::string& hostPath) {
    std::erase_if(m_files, [&](const File& f) { return f.host == hostPath; });
}

void UnsettledFiles::Settle(const FileSystem& files) {
    if (m_files.empty())
        return;
#ifndef _WIN32
    struct Open {
        int fd;
        const File* file;
    };
    std::vector<Open> open;
    open.reserve(m_files.size());
    const auto closeAll = [&open] {
        for (const Open& o : open)
            ::close(o.fd);
    };
    // First every file's write-back is started, so that the disk takes them in one go; then each
    // is waited for. Many files (an export of hundreds of programs) are written by the host's own
    // flush of their whole file system, which takes them in far fewer writes than one by one;
    // each file's own force after it finds nothing left to write and only tells its errors.
    const bool many = m_files.size() >= ManyFiles;
    std::set<dev_t> flushed;
    for (const File& f : m_files) {
        const int fd = ::open(f.host.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd < 0)
            continue; // gone or renamed by someone else: nothing of ours to keep
        open.push_back({fd, &f});
        struct stat info {};
        if (!many)
            StartWriteBack(fd, 0, 0);
        else if (::fstat(fd, &info) == 0 && flushed.insert(info.st_dev).second)
            FlushFileSystem(fd);
    }
    std::set<std::string> directories;
    for (const Open& o : open) {
        int error = files.InjectedFault(FileStep::Sync, o.file->full);
        if (error == 0 && ::fsync(o.fd) != 0)
            error = errno;
        if (error != 0) {
            closeAll();
            files.ThrowFromErrno(error, files.Resolve(o.file->full));
        }
        directories.insert(std::filesystem::path(o.file->host).parent_path().string());
    }
    closeAll();
    // Their names, which the file's own force may not cover on every file system.
    for (const std::string& dir : directories) {
        const int fd = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (fd >= 0) {
            ::fsync(fd);
            ::close(fd);
        }
    }
#else
    (void)files;
#endif
    m_files.clear();
}

void FlushFileSystem(int fd) {
#if defined(__linux__)
    ::syncfs(fd);
#else
    (void)fd;
#endif
}

void StartWriteBack(int fd, std::int64_t from, std::int64_t length) {
#if defined(__linux__)
    ::sync_file_range(fd, off64_t(from), off64_t(length), SYNC_FILE_RANGE_WRITE);
#else
    (void)fd;
    (void)from;
    (void)length;
#endif
}

void WriteBackPacer::Written(int fd, std::int64_t written) {
    if (!Due(written))
        return;
    StartWriteBack(fd, m_started, written - m_started);
    m_started = written;
}

} // namespace kestrova
