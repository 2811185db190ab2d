#pragma once

#include "platform/FileSystem.h"

#include <QByteArray>
#include <cstdio>
#include <memory>

namespace kestrova {

// A file of fixed-size records for random access, numbered from 1: record r lies at byte
// (r - 1) * length. Opening creates the file when it is missing. Reading a record beyond the
// end gives zero bytes; writing one beyond the end lengthens the file.
class RecordFile {
public:
    RecordFile(FileSystem& files, const QString& path, int recordLength);
    ~RecordFile();
    RecordFile(const RecordFile&) = delete;
    RecordFile& operator=(const RecordFile&) = delete;

    [[nodiscard]] QByteArray Read(int record);
    // The bytes are cut or padded with zero bytes to the record length.
    void Write(int record, const QByteArray& bytes);
    // Whole records in the file (a partial last record counts as one).
    [[nodiscard]] int RecordCount();
    [[nodiscard]] bool AtEnd(int lastRecordRead);
    void Close();

private:
    struct Closer {
        void operator()(std::FILE* f) const noexcept;
    };
    FileSystem::Resolved m_where;
    FileSystem& m_files;
    int m_length;
    std::unique_ptr<std::FILE, Closer> m_file;
};

} // namespace kestrova
