#pragma once

#include "platform/DiskWrites.h"
#include "platform/FileSystem.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <cstdio>
#include <memory>

namespace kestrova {

class FileReplacement;

// Files are single-byte text. In memory each byte is the character the screen shows for it
// (ScreenTextOf), so a text read and written again is byte for byte what it was; nothing
// converts an encoding on disk. A character the screen's page cannot hold is written as "?".
[[nodiscard]] QString FromBytes(const QByteArray& bytes);
[[nodiscard]] QByteArray ToBytes(const QString& text);

// Reads a text file line by line, only as far as the caller asks. A line ends at CR LF, LF or
// CR; the line end is not part of the line. Reading past the last line is the "Input past end
// of file" error, naming the file.
class LineReader {
public:
    LineReader(const FileSystem& files, const QString& path);
    ~LineReader();
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    [[nodiscard]] QString ReadLine();
    // The same line as its bytes, for readers of files of millions of lines: valid until the
    // next read.
    [[nodiscard]] QByteArrayView ReadLineBytes();
    [[nodiscard]] bool AtEnd();
    [[nodiscard]] const QString& Path() const { return m_path; }

private:
    bool Fill();
    struct Closer {
        void operator()(std::FILE* f) const noexcept;
    };
    std::unique_ptr<std::FILE, Closer> m_file;
    QString m_path;
    QByteArray m_buffer;
    qsizetype m_pos = 0;
    bool m_eof = false;
};

// Writes a text file. Every line written with WriteLine gets CR LF.
//  - Create: opens for output, truncating or creating the file; it reaches the disk before the
//    layer next deletes or renames anything (DiskWrites.h).
//  - Append: adds to the end, creating the file when missing.
//  - Replace: the new text replaces the file whole at Close() (FileReplacement: beside the real
//    file, on the disk, with the old mode, a link kept), so a failure leaves the original
//    untouched (the way settings files are rewritten).
// Close() reports a failed write; without it the destructor closes quietly and a Replace
// leaves the original as it was.
class TextWriter {
public:
    enum class Mode { Create, Append, Replace };

    TextWriter(FileSystem& files, const QString& path, Mode mode);
    ~TextWriter();
    TextWriter(const TextWriter&) = delete;
    TextWriter& operator=(const TextWriter&) = delete;

    void Write(const QString& text);
    void WriteBytes(QByteArrayView bytes);
    void WriteLine(const QString& line);
    void Close();
    [[nodiscard]] const QString& Path() const { return m_path; }
    // Create and Append: every write goes to the host at once, none waits in this program, so
    // that after a failed write Written() tells exactly what the file holds of it.
    void WriteThrough();
    // The bytes handed to the host so far, a write that failed part-way included.
    [[nodiscard]] std::int64_t Written() const { return m_written; }

private:
    struct Closer {
        void operator()(std::FILE* f) const noexcept;
    };
    FileSystem::Resolved m_target;
    QString m_path;
    Mode m_mode;
    std::unique_ptr<std::FILE, Closer> m_file;      // Create and Append
    std::unique_ptr<FileReplacement> m_replacement; // Replace
    FileSystem& m_files;
    std::int64_t m_written = 0;
    WriteBackPacer m_pacer;
};

// Every line of a file.
[[nodiscard]] QStringList ReadAllLines(const FileSystem& files, const QString& path);
// The whole file as bytes.
[[nodiscard]] QByteArray ReadAllBytes(const FileSystem& files, const QString& path);
// Rewrites a file whole with the given lines, each ended by CR LF.
void WriteAllLines(FileSystem& files, const QString& path, const QStringList& lines);
// Adds lines to the end of a file, creating it when missing.
void AppendLines(FileSystem& files, const QString& path, const QStringList& lines);

} // namespace kestrova
