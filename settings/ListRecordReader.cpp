#include "settings/ListRecordReader.h"

#include "platform/Blanks.h"
#include "platform/TextFile.h"

namespace kestrova {

ListRecordReader::ListRecordReader(const FileSystem& files, const QString& path)
    : m_path(files.FullPath(path)), m_text(ReadAllBytes(files, path)) {}

void ListRecordReader::SkipDelimiter() {
    // After an item: blanks, then one comma or one line end (CR LF, LF or CR).
    while (m_pos < m_text.size() && m_text.at(m_pos) == ' ')
        ++m_pos;
    if (m_pos >= m_text.size())
        return;
    const char c = m_text.at(m_pos);
    if (c == ',') {
        ++m_pos;
    } else if (c == '\r') {
        ++m_pos;
        if (m_pos < m_text.size() && m_text.at(m_pos) == '\n')
            ++m_pos;
    } else if (c == '\n') {
        ++m_pos;
    }
}

QString ListRecordReader::ReadItem() {
    if (AtEnd())
        throw InputPastEndError(m_path);
    while (m_pos < m_text.size() && m_text.at(m_pos) == ' ')
        ++m_pos;
    QByteArray item;
    if (m_pos < m_text.size() && m_text.at(m_pos) == '"') {
        const qsizetype close = m_text.indexOf('"', m_pos + 1);
        const qsizetype end = close < 0 ? m_text.size() : close;
        item = m_text.mid(m_pos + 1, end - m_pos - 1);
        m_pos = close < 0 ? m_text.size() : close + 1;
        // Anything between the closing quote and the next delimiter is not part of the item.
        while (m_pos < m_text.size() && m_text.at(m_pos) != ',' && m_text.at(m_pos) != '\r' &&
               m_text.at(m_pos) != '\n')
            ++m_pos;
    } else {
        const qsizetype start = m_pos;
        while (m_pos < m_text.size() && m_text.at(m_pos) != ',' && m_text.at(m_pos) != '\r' &&
               m_text.at(m_pos) != '\n')
            ++m_pos;
        item = TrimBlanks(m_text.mid(start, m_pos - start));
    }
    SkipDelimiter();
    return FromBytes(item);
}

} // namespace kestrova
