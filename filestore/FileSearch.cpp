#include "filestore/FileSearch.h"

#include "filestore/Names.h"
#include "platform/Blanks.h"

namespace kestrova {

namespace {

bool Skipped(const QString& entry) {
    return entry == QLatin1String(".") || entry == QLatin1String("..") ||
           entry.compare(QLatin1String("EXSUBS"), Qt::CaseInsensitive) == 0;
}

// The search form shows a name quoted with a blank inside each mark.
QString QuotedWithBlanks(const QString& text) {
    return QStringLiteral("\" ") + text + QStringLiteral(" \"");
}

} // namespace

QString SearchMachineDir(const GlobalSettings& g, int searchMode) {
    return searchMode == 22 ? g.CommsMachineDir : g.MachineDir;
}

QString SearchRefusal(const QString& text, bool drawings, bool programs) {
    if (TrimBlanks(text).size() >= 33)
        return QStringLiteral("Invalid Search Text");
    if (!drawings && !programs)
        return QStringLiteral("Drawings And / Or Programs Must Be Selected");
    return {};
}

QList<SearchRow> SearchFiles(Session& session, const QString& machineDir, const QString& text, bool drawings,
                             bool programs) {
    const GlobalSettings& g = session.settings;
    const FileSystem& files = session.files;
    const QString wanted = TrimBlanks(text);
    const bool both = drawings && programs;
    const QString pattern = both       ? QStringLiteral("*.drw;*.prg")
                            : drawings ? QStringLiteral("*.drw")
                            : programs ? QStringLiteral("*.prg")
                                       : QString();
    QList<SearchRow> rows;
    if (pattern.isEmpty())
        return rows;
    const QString machineBase = g.RootPath + TrimBlanks(machineDir) + u'\\';
    for (const QString& directory : files.List(machineBase, QStringLiteral("*.*"), EntryKinds::Directories)) {
        if (Skipped(directory))
            continue;
        for (const QString& file :
             files.List(PathJoin(g, machineDir, directory), pattern, EntryKinds::Files)) {
            const QString name = StripExtension(file);
            if (both && !rows.isEmpty() && rows.last().name.compare(name, Qt::CaseInsensitive) == 0 &&
                rows.last().directory.compare(directory, Qt::CaseInsensitive) == 0)
                continue;
            if (name.contains(wanted, Qt::CaseInsensitive))
                rows.append({name, TrimBlanks(directory)});
        }
    }
    return rows;
}

QString NothingFoundMessage(const QString& text, bool drawings, bool programs) {
    const QString wanted = TrimBlanks(text);
    if (!wanted.isEmpty())
        return QStringLiteral("No Occurrences Of ") + QuotedWithBlanks(wanted) + QStringLiteral(" Found ");
    if (drawings && programs)
        return QStringLiteral("No Drawings Or Programs Found ");
    return drawings ? QStringLiteral("No Drawings Found ") : QStringLiteral("No Programs Found ");
}

QString SearchTextCaption(const QString& text) {
    const QString wanted = TrimBlanks(text);
    return wanted.isEmpty() ? QString() : QuotedWithBlanks(wanted);
}

QString SearchKindCaption(bool drawings, bool programs) {
    if (drawings && programs)
        return QStringLiteral(" All Files ");
    return drawings ? QStringLiteral(" Drawings ") : QStringLiteral(" Programs ");
}

} // namespace kestrova
