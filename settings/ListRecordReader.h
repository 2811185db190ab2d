#pragma once

#include "platform/FileSystem.h"

#include <QByteArray>
#include <QString>

namespace kestrova {

// Comma-separated item input, as `Machine.lst`, `Reverse.lst` and "Lastfile.lst" are read:
// items are separated by commas or line ends, surrounding blanks are not part of an item, and
// an item may stand in double quotes (then commas inside it belong to it). Reading an item
// when the file is at its end is the "Input past end of file" error, naming the file.
class ListRecordReader {
public:
    ListRecordReader(const FileSystem& files, const QString& path);

    [[nodiscard]] QString ReadItem();
    [[nodiscard]] bool AtEnd() const { return m_pos >= m_text.size(); }
    [[nodiscard]] const QString& Path() const { return m_path; }

private:
    void SkipDelimiter();

    QString m_path;
    QByteArray m_text;
    qsizetype m_pos = 0;
};

} // namespace kestrova
