#include "exchange/LookupTable.h"

#include "platform/Blanks.h"
#include "platform/TextFile.h"
#include "settings/SettingsFile.h"

namespace kestrova {

namespace {

// The integer value of a text as the suite reads numbers: blanks skipped, an optional sign,
// then digits up to the first other character. Too large a value counts as none.
int NumberValue(const QString& text) {
    qsizetype i = 0;
    while (i < text.size() && text.at(i) == u' ')
        ++i;
    bool negative = false;
    if (i < text.size() && (text.at(i) == u'-' || text.at(i) == u'+'))
        negative = text.at(i++) == u'-';
    long long value = 0;
    bool any = false;
    for (; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == u' ')
            continue;
        if (c < u'0' || c > u'9')
            break;
        any = true;
        value = value * 10 + (c.unicode() - '0');
        if (value > 32767)
            return 0;
    }
    if (!any)
        return 0;
    return int(negative ? -value : value);
}

} // namespace

QList<LookupLine> ParseLookupTable(const QByteArray& bytes) {
    QList<LookupLine> lines;
    qsizetype start = 0;
    while (start < bytes.size()) {
        qsizetype end = start;
        while (end < bytes.size() && bytes.at(end) != '\r' && bytes.at(end) != '\n')
            ++end;
        LookupLine line;
        line.text = FromBytes(bytes.mid(start, end - start));
        // A line ends at CR LF, LF or CR.
        start = end;
        if (start < bytes.size())
            start +=
                (bytes.at(start) == '\r' && start + 1 < bytes.size() && bytes.at(start + 1) == '\n') ? 2 : 1;
        const QString trimmed = TrimBlanks(line.text);
        if (trimmed == EndMarker)
            break;
        const qsizetype comma = trimmed.indexOf(u',');
        if (comma >= 0) {
            line.name = TrimBlanks(trimmed.left(comma));
            line.number = NumberValue(trimmed.mid(comma + 1));
        }
        lines << line;
    }
    return lines;
}

QList<LookupLine> ReadLookupTable(const FileSystem& files, const QString& directory) {
    const QString path = directory + LookupTableName;
    if (!files.IsFile(path))
        return {};
    return ParseLookupTable(ReadAllBytes(files, path));
}

int FindLookupEntry(const QList<LookupLine>& lines, const QString& name) {
    for (int i = 0; i < lines.size(); ++i) {
        if (lines.at(i).Matches(name))
            return i;
    }
    return -1;
}

QString LookupEntryLine(const QString& name, int number) {
    return name + QStringLiteral(", ") + QString::number(number) + u' ';
}

void RewriteLookupTable(FileSystem& files, const QString& programPath, const QString& directory,
                        const QList<LookupLine>& lines, int replace, const QString& entryLine) {
    const QString temp = programPath + LookupTempName;
    const QString table = directory + LookupTableName;
    QStringList text;
    for (int i = 0; i < lines.size(); ++i)
        text << (i == replace ? entryLine : lines.at(i).text);
    if (replace < 0)
        text << entryLine;
    text << EndMarker;
    {
        TextWriter writer(files, temp, TextWriter::Mode::Create);
        for (const QString& line : text)
            writer.WriteLine(line);
        writer.Close();
    }
    // The copy replaces the old table whole, so it stays there until the new one is complete.
    try {
        files.Copy(temp, table);
    } catch (const SystemError& error) {
        ThrowSystemError(error.kind(), error.subject(),
                         QStringLiteral("the new table is kept whole in \"%1\"").arg(files.FullPath(temp)));
    }
    files.Delete(temp);
}

} // namespace kestrova
