#include "platform/RecordFile.h"

#include "platform/HostPath.h"

#include <cerrno>
#ifndef _WIN32
#include <unistd.h>
#endif

namespace kestrova {

void RecordFile::Closer::operator()(std::FILE* f) const noexcept {
    if (f)
        std::fclose(f);
}

RecordFile::RecordFile(FileSystem& files, const QString& path, int recordLength)
    : m_files(files), m_length(recordLength) {
    m_where = files.Resolve(path);
    if (!m_where.exists && !m_where.parentExists)
        files.ThrowMissing(m_where);
    if (m_where.exists && m_where.isDirectory)
        throw PathFileAccessError(m_where.full, QStringLiteral("is a directory"));
    files.CheckFault(FileStep::Open, m_where);
    const auto host = host::ToFs(m_where.host);
    m_file.reset(std::fopen(host.c_str(), m_where.exists ? "r+b" : "w+b"));
    if (!m_where.exists)
        files.EntryChanged(host);
    if (!m_file)
        files.ThrowFromErrno(errno, m_where);
}

RecordFile::~RecordFile() = default;

QByteArray RecordFile::Read(int record) {
    QByteArray bytes(m_length, '\0');
    if (std::fseek(m_file.get(), long(record - 1) * m_length, SEEK_SET) != 0)
        m_files.ThrowFromErrno(errno, m_where);
    const size_t got = std::fread(bytes.data(), 1, size_t(m_length), m_file.get());
    if (got < size_t(m_length) && std::ferror(m_file.get()))
        throw DeviceIoError(m_where.full);
    return bytes;
}

void RecordFile::Write(int record, const QByteArray& bytes) {
    QByteArray padded = bytes.left(m_length);
    padded.append(QByteArray(m_length - padded.size(), '\0'));
    m_files.CheckFault(FileStep::Write, m_where);
    if (std::fseek(m_file.get(), long(record - 1) * m_length, SEEK_SET) != 0)
        m_files.ThrowFromErrno(errno, m_where);
    if (std::fwrite(padded.constData(), 1, size_t(m_length), m_file.get()) != size_t(m_length) ||
        std::fflush(m_file.get()) != 0)
        m_files.ThrowFromErrno(errno, m_where);
}

int RecordFile::RecordCount() {
    if (std::fseek(m_file.get(), 0, SEEK_END) != 0)
        m_files.ThrowFromErrno(errno, m_where);
    const long size = std::ftell(m_file.get());
    return int((size + m_length - 1) / m_length);
}

bool RecordFile::AtEnd(int lastRecordRead) {
    return lastRecordRead >= RecordCount();
}

void RecordFile::Close() {
    if (!m_file)
        return;
    // Records changed on a floppy or stick are on it when the work is done, as a new file is.
    const bool force = m_files.OnRemovableDrive(m_where.full);
    if (force && m_files.Batching()) {
        m_files.RememberUnsettled(host::ToFs(m_where.host).string(), m_where.full);
    } else if (force) {
        if (const int fault = m_files.InjectedFault(FileStep::Sync, m_where.full)) {
            m_file.reset();
            m_files.ThrowFromErrno(fault, m_where);
        }
        bool flushed = std::fflush(m_file.get()) == 0;
#ifndef _WIN32
        flushed = flushed && ::fsync(fileno(m_file.get())) == 0;
#endif
        if (!flushed) {
            const int error = errno;
            m_file.reset();
            m_files.ThrowFromErrno(error, m_where);
        }
    }
    if (std::fclose(m_file.release()) != 0)
        m_files.ThrowFromErrno(errno, m_where);
}

} // namespace kestrova
