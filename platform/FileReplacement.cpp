#include "platform/FileReplacement.h"

#include "platform/HostPath.h"

#include <cerrno>
#include <vector>
#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace kestrova {

namespace fs = std::filesystem;

namespace {

// The file a path stands for: a link (or a chain of them) followed to the file it names.
fs::path RealFile(const fs::path& path) {
    std::error_code ec;
    if (!fs::is_symlink(fs::symlink_status(path, ec)))
        return path;
    const fs::path real = fs::canonical(path, ec);
    return ec ? path : real; // a dangling link is replaced like a missing file
}

// Gives the new text, open as fd, the mode (and owner, where the host allows) of the file it is
// to replace, and forces it to the disk. The host's error number, or 0.
int TakeOldModeOnTheDisk([[maybe_unused]] int fd, [[maybe_unused]] const fs::path& real) {
#ifndef _WIN32
    struct stat old {};
    if (::stat(real.c_str(), &old) == 0) {
        if (::fchmod(fd, old.st_mode & 07777) != 0)
            return errno;
        // Only a privileged user may give a file away; anyone else keeps it as the host made it.
        [[maybe_unused]] const int owned = ::fchown(fd, old.st_uid, old.st_gid);
    }
    if (::fsync(fd) != 0)
        return errno;
#endif
    return 0;
}

// Renames the complete new text over the old file, the rename itself on the disk with its
// directory unless that waits for the end of a batch. The host's error number, or 0.
int RenameOnTheDisk(const fs::path& from, const fs::path& real, bool forceDirectory = true) {
    std::error_code ec;
    fs::rename(from, real, ec);
    if (ec)
        return ec.value();
    if (!forceDirectory)
        return 0;
#ifndef _WIN32
    const int dir = ::open(real.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir >= 0) {
        ::fsync(dir);
        ::close(dir);
    }
#endif
    return 0;
}

} // namespace

void FileReplacement::Closer::operator()(std::FILE* f) const noexcept {
    if (f)
        std::fclose(f);
}

FileReplacement::FileReplacement(FileSystem& files, const FileSystem::Resolved& target)
    : m_files(files), m_target(target), m_real(RealFile(host::ToFs(target.host))) {
    m_sibling = m_real.parent_path() / ("." + m_real.filename().string() + ".kestrova-new");
    files.CheckFault(FileStep::Open, m_target);
    m_file.reset(std::fopen(m_sibling.c_str(), "wb"));
    if (!m_file)
        files.ThrowFromErrno(errno, m_target);
}

FileReplacement::~FileReplacement() {
    Abandon();
}

void FileReplacement::Abandon() noexcept {
    if (!m_file)
        return;
    m_file.reset();
    std::error_code ignored;
    fs::remove(m_sibling, ignored);
}

void FileReplacement::Fail(int error) {
    Abandon();
    m_files.ThrowFromErrno(error, m_target);
}

void FileReplacement::Write(const char* data, std::size_t size) {
    if (size == 0)
        return;
    if (const int fault = m_files.InjectedFault(FileStep::Write, m_target.full))
        Fail(fault);
    if (std::fwrite(data, 1, size, m_file.get()) != size)
        Fail(errno);
    Wrote(size);
}

void FileReplacement::Wrote(std::size_t size) {
    m_written += std::int64_t(size);
    if (!m_pacer.Due(m_written))
        return;
    if (std::fflush(m_file.get()) != 0)
        Fail(errno);
    m_pacer.Written(fileno(m_file.get()), m_written);
}

void FileReplacement::CopyFrom(int sourceFd, const FileSystem::Resolved& source) {
    if (std::fflush(m_file.get()) != 0)
        Fail(errno);
    const int out = fileno(m_file.get());
    // Large steps, each one a "Write" of the fault hook, so that a copy can fail part-way.
    constexpr std::size_t Step = std::size_t(1) << 20;
    std::vector<char> buffer; // only where the host cannot copy by itself
    struct stat info {};
    const std::int64_t size = ::fstat(sourceFd, &info) == 0 ? std::int64_t(info.st_size) : 0;
    for (;;) {
        // The step that finds the end is no write.
        if (m_written < size)
            if (const int fault = m_files.InjectedFault(FileStep::Write, m_target.full))
                Fail(fault);
        long got = -1;
#if defined(__linux__)
        if (buffer.empty()) {
            got = long(::copy_file_range(sourceFd, nullptr, out, nullptr, Step, 0));
            // Between file systems that cannot, or on older hosts: the copy goes through here.
            if (got < 0 && m_written == 0 &&
                (errno == EXDEV || errno == ENOSYS || errno == EINVAL || errno == EOPNOTSUPP ||
                 errno == EBADF))
                buffer.resize(Step);
            else if (got < 0)
                Fail(errno);
        }
#else
        buffer.resize(Step);
#endif
        if (!buffer.empty()) {
            got = long(::read(sourceFd, buffer.data(), buffer.size()));
            if (got < 0) {
                Abandon();
                m_files.ThrowFromErrno(EIO, source);
            }
            for (long put = 0; put < got;) {
                const long n = long(::write(out, buffer.data() + put, std::size_t(got - put)));
                if (n < 0)
                    Fail(errno);
                put += n;
            }
        }
        if (got == 0)
            return;
        m_written += got;
        m_pacer.Written(out, m_written);
    }
}

void FileReplacement::Commit() {
    const auto step = [this](FileStep at) {
        if (const int fault = m_files.InjectedFault(at, m_target.full))
            Fail(fault);
    };
    step(FileStep::Close);
    if (std::fflush(m_file.get()) != 0)
        Fail(errno);
    // Within a batch a file under a new name goes to the disk with the rest at the end; one that
    // replaces an old text never waits.
    const bool later = m_files.Batching() && !m_target.exists;
    if (!later) {
        step(FileStep::Sync);
        if (const int error = TakeOldModeOnTheDisk(fileno(m_file.get()), m_real))
            Fail(error);
    }
    // The old text goes with the rename: whatever was made from it must be on the disk first.
    if (m_target.exists)
        m_files.SettleWrites();
    step(FileStep::Replace);
    // Closed only now, so that every failure up to here removes the sibling the same way.
    if (std::fclose(m_file.release()) != 0) {
        const int error = errno;
        std::error_code ignored;
        fs::remove(m_sibling, ignored);
        m_files.ThrowFromErrno(error, m_target);
    }
    if (const int error = RenameOnTheDisk(m_sibling, m_real, !later)) {
        std::error_code ignored;
        fs::remove(m_sibling, ignored);
        m_files.ThrowFromErrno(error, m_target);
    }
    m_files.EntryChanged(m_real);
    if (later)
        m_files.RememberUnsettled(m_real.string(), m_target.full);
}

bool MoveIntoPlace(FileSystem& files, const FileSystem::Resolved& newText,
                   const FileSystem::Resolved& target) {
    const fs::path from = host::ToFs(newText.host);
    const fs::path real = RealFile(host::ToFs(target.host));
#ifndef _WIN32
    struct stat source {};
    struct stat old {};
    if (::stat(from.c_str(), &source) != 0 || ::stat(real.c_str(), &old) != 0 || source.st_dev != old.st_dev)
        return false;
    const int fd = ::open(from.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        files.ThrowFromErrno(errno, newText);
    struct Closer {
        int fd;
        ~Closer() { ::close(fd); }
    } closer{fd};
    files.CheckFault(FileStep::Sync, newText);
    if (const int error = TakeOldModeOnTheDisk(fd, real))
        files.ThrowFromErrno(error, newText);
#endif
    files.CheckFault(FileStep::Replace, target);
    const int error = RenameOnTheDisk(from, real);
    files.EntryChanged(from);
    files.EntryChanged(real);
    if (error)
        files.ThrowFromErrno(error, target);
    return true;
}

} // namespace kestrova
