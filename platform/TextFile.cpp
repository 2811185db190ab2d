#include "platform/TextFile.h"

#include "platform/FileReplacement.h"
#include "platform/HostPath.h"
#include "platform/ScreenText.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#ifndef _WIN32
#include <unistd.h>
#endif

namespace kestrova {

namespace fs = std::filesystem;

QString FromBytes(const QByteArray& bytes) {
    return ScreenTextOf(bytes);
}

QByteArray ToBytes(const QString& text) {
    return BytesOfScreenText(text);
}

// --- LineReader ----------------------------------------------------------------------------

void LineReader::Closer::operator()(std::FILE* f) const noexcept {
    if (f)
        std::fclose(f);
}

LineReader::LineReader(const FileSystem& files, const QString& path) {
    const FileSystem::Resolved r = files.Resolve(path);
    m_path = r.full;
    if (!r.exists)
        files.ThrowMissing(r);
    if (r.isDirectory)
        throw PathFileAccessError(r.full, QStringLiteral("is a directory"));
    files.CheckFault(FileStep::Read, r);
    m_file.reset(std::fopen(host::ToFs(r.host).c_str(), "rb"));
    if (!m_file)
        files.ThrowFromErrno(errno, r);
}

LineReader::~LineReader() = default;

bool LineReader::Fill() {
    if (m_eof)
        return false;
    // The unread rest moves to the front and the next read goes straight in behind it: the
    // buffer keeps its room, so a file of any length is read without a new allocation.
    constexpr qsizetype Chunk = 1 << 18;
    const qsizetype rest = m_buffer.size() - m_pos;
    if (m_pos > 0 && rest > 0)
        std::memmove(m_buffer.data(), m_buffer.constData() + m_pos, size_t(rest));
    m_pos = 0;
    if (m_buffer.capacity() < rest + Chunk)
        m_buffer.reserve(std::max(2 * m_buffer.capacity(), rest + Chunk)); // a very long line
    m_buffer.resize(rest + Chunk);
    const size_t got = std::fread(m_buffer.data() + rest, 1, size_t(Chunk), m_file.get());
    m_buffer.resize(rest + qsizetype(got));
    if (got == 0) {
        if (std::ferror(m_file.get()))
            throw DeviceIoError(m_path);
        m_eof = true;
        return false;
    }
    return true;
}

bool LineReader::AtEnd() {
    while (m_pos >= m_buffer.size())
        if (!Fill())
            return true;
    return false;
}

QString LineReader::ReadLine() {
    const QByteArrayView line = ReadLineBytes();
    return ScreenTextOf(line);
}

QByteArrayView LineReader::ReadLineBytes() {
    if (AtEnd())
        throw InputPastEndError(m_path);
    qsizetype scanned = 0; // bytes of the line seen so far, from m_pos
    for (;;) {
        const char* from = m_buffer.constData() + m_pos + scanned;
        const size_t rest = size_t(m_buffer.size() - m_pos - scanned);
        const void* lf = std::memchr(from, '\n', rest);
        const size_t lfAt = lf ? size_t(static_cast<const char*>(lf) - from) : rest;
        const void* cr = std::memchr(from, '\r', lfAt);
        if (cr || lf) {
            const qsizetype length = scanned + (cr ? static_cast<const char*>(cr) - from : qsizetype(lfAt));
            if (cr && m_pos + length + 1 >= m_buffer.size()) {
                // A CR LF pair may straddle two reads. Fill() may move the line to the front of
                // the buffer: everything here counts from m_pos.
                Fill();
            }
            const qsizetype start = m_pos;
            m_pos = start + length + 1;
            if (cr && m_pos < m_buffer.size() && m_buffer.at(m_pos) == '\n')
                ++m_pos;
            return QByteArrayView(m_buffer.constData() + start, length);
        }
        scanned = m_buffer.size() - m_pos;
        if (!Fill()) {
            const qsizetype start = m_pos;
            m_pos = m_buffer.size();
            return QByteArrayView(m_buffer.constData() + start, m_pos - start);
        }
    }
}

// --- TextWriter ----------------------------------------------------------------------------

void TextWriter::Closer::operator()(std::FILE* f) const noexcept {
    if (f)
        std::fclose(f);
}

TextWriter::TextWriter(FileSystem& files, const QString& path, Mode mode) : m_mode(mode), m_files(files) {
    m_target = files.Resolve(path);
    m_path = m_target.full;
    if (!m_target.exists && !m_target.parentExists)
        files.ThrowMissing(m_target);
    if (m_target.exists && m_target.isDirectory)
        throw PathFileAccessError(m_path, QStringLiteral("is a directory"));
    const fs::path target = host::ToFs(m_target.host);
    if (m_target.exists) {
        std::error_code ec;
        const auto perms = fs::status(target, ec).permissions();
        if (!ec && (perms & fs::perms::owner_write) == fs::perms::none)
            throw PermissionDeniedError(m_path);
    }
    if (mode == Mode::Replace) {
        m_replacement = std::make_unique<FileReplacement>(files, m_target);
        return;
    }
    files.CheckFault(FileStep::Open, m_target);
    m_file.reset(std::fopen(target.c_str(), mode == Mode::Append ? "ab" : "wb"));
    if (!m_target.exists)
        files.EntryChanged(target);
    if (!m_file)
        files.ThrowFromErrno(errno, m_target);
}

TextWriter::~TextWriter() = default;

void TextWriter::WriteBytes(QByteArrayView bytes) {
    if (m_replacement && m_replacement->Open()) {
        m_replacement->Write(bytes.data(), size_t(bytes.size()));
        return;
    }
    if (!m_file)
        throw PathFileAccessError(m_path, QStringLiteral("file is closed"));
    if (!bytes.isEmpty())
        m_files.CheckFault(FileStep::Write, m_target);
    // A disk that fills up takes part of a write before it refuses the rest: what it took is
    // counted, and the write goes on until the host says why it stops.
    for (size_t put = 0; put < size_t(bytes.size());) {
        const size_t n = std::fwrite(bytes.data() + put, 1, size_t(bytes.size()) - put, m_file.get());
        m_written += std::int64_t(n);
        put += n;
        if (n == 0)
            m_files.ThrowFromErrno(errno, m_target);
    }
    // A large file starts on its way to the disk while it is written.
    if (m_pacer.Due(m_written)) {
        if (std::fflush(m_file.get()) != 0)
            m_files.ThrowFromErrno(errno, m_target);
        m_pacer.Written(fileno(m_file.get()), m_written);
    }
}

void TextWriter::WriteThrough() {
    if (m_file)
        std::setvbuf(m_file.get(), nullptr, _IONBF, 0);
}

void TextWriter::Write(const QString& text) {
    WriteBytes(ToBytes(text));
}

void TextWriter::WriteLine(const QString& line) {
    WriteBytes(ToBytes(line) + "\r\n");
}

void TextWriter::Close() {
    if (m_replacement) {
        if (m_replacement->Open())
            m_replacement->Commit();
        return;
    }
    if (!m_file)
        return;
    try {
        m_files.CheckFault(FileStep::Close, m_target);
    } catch (const SystemError&) {
        m_file.reset();
        throw;
    }
    // Within a batch, a file on a removable drive is forced with the rest as the batch ends.
    const bool removable =
        m_mode == Mode::Create && !m_files.Batching() && m_files.OnRemovableDrive(m_target.full);
    bool flushed = std::fflush(m_file.get()) == 0;
    int flushError = errno;
#ifndef _WIN32
    if (flushed && removable) {
        try {
            m_files.CheckFault(FileStep::Sync, m_target);
        } catch (const SystemError&) {
            m_file.reset();
            throw;
        }
        flushed = ::fsync(fileno(m_file.get())) == 0;
        flushError = errno;
    }
#endif
    const bool closed = std::fclose(m_file.release()) == 0;
    const int closeError = errno;
    if (!flushed || !closed)
        m_files.ThrowFromErrno(!flushed ? flushError : closeError, m_target);
    if (m_mode == Mode::Create && !removable)
        m_files.RememberUnsettled(host::ToFs(m_target.host).string(), m_target.full);
}

// --- Whole files ---------------------------------------------------------------------------

QStringList ReadAllLines(const FileSystem& files, const QString& path) {
    LineReader reader(files, path);
    QStringList lines;
    while (!reader.AtEnd())
        lines << reader.ReadLine();
    return lines;
}

QByteArray ReadAllBytes(const FileSystem& files, const QString& path) {
    const FileSystem::Resolved r = files.Resolve(path);
    if (!r.exists)
        files.ThrowMissing(r);
    files.CheckFault(FileStep::Read, r);
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> f(std::fopen(host::ToFs(r.host).c_str(), "rb"),
                                                      &std::fclose);
    if (!f)
        files.ThrowFromErrno(errno, r);
    QByteArray bytes;
    char chunk[1 << 16];
    size_t got;
    while ((got = std::fread(chunk, 1, sizeof chunk, f.get())) > 0)
        bytes.append(chunk, qsizetype(got));
    if (std::ferror(f.get()))
        throw DeviceIoError(r.full);
    return bytes;
}

void WriteAllLines(FileSystem& files, const QString& path, const QStringList& lines) {
    TextWriter writer(files, path, TextWriter::Mode::Replace);
    for (const QString& line : lines)
        writer.WriteLine(line);
    writer.Close();
}

void AppendLines(FileSystem& files, const QString& path, const QStringList& lines) {
    TextWriter writer(files, path, TextWriter::Mode::Append);
    for (const QString& line : lines)
        writer.WriteLine(line);
    writer.Close();
}

} // namespace kestrova
