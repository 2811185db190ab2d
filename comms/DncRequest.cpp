#include "comms/DncRequest.h"

#include "filestore/Names.h"
#include "platform/Blanks.h"
#include "platform/TextFile.h"

#include <QStringList>

namespace kestrova {

namespace {

const QString ListRequest = QStringLiteral("(DIR)");
const QString ReservedDirectory = QStringLiteral("EXSUBS");

// The machine's data directories in name order; the reserved one is never offered.
QStringList DataDirectories(const FileSystem& files, const GlobalSettings& g, const QString& machineDir) {
    QStringList directories;
    for (const QString& entry :
         files.List(g.RootPath + machineDir + u'\\', QStringLiteral("*"), EntryKinds::Directories))
        if (entry.compare(ReservedDirectory, Qt::CaseInsensitive) != 0 && AcceptableOutsideName(entry))
            directories << entry;
    return directories;
}

// A name the control may not see echoed whole: what it asked, without the brackets that would
// end the comment early, and never longer than a name may be.
QString Echoed(const QString& asked) {
    QString echoed;
    for (const QChar c : asked)
        if (c.unicode() >= 32 && c != u'(' && c != u')')
            echoed += c;
    return echoed.left(40);
}

DncAnswer NotFound(const QString& asked, const QString& reason) {
    const QString name = Echoed(asked);
    return {QString(), QStringLiteral("NOT FOUND"),
            ToBytes(QStringLiteral("(NOT FOUND ") + name + QStringLiteral(")\r\n")),
            QStringLiteral("not found: ") + reason};
}

} // namespace

std::optional<DncRequestForm> ParseDncRequestForm(const QString& text) {
    const QString form = TrimBlanks(text);
    const qsizetype star = form.indexOf(u'*');
    if (star < 1 || form.indexOf(u'*', star + 1) >= 0)
        return std::nullopt;
    return DncRequestForm{form.left(star), form.mid(star + 1)};
}

std::optional<DncRequest> ReadDncRequest(const QByteArray& program, const DncRequestForm& form) {
    QString only;
    for (const QString& raw : FromBytes(program).split(u'\n')) {
        QString line = TrimBlanks(QString(raw).remove(u'\r'));
        while (line.startsWith(u'%'))
            line = TrimBlanks(line.mid(1));
        if (line.isEmpty())
            continue;
        if (!only.isEmpty())
            return std::nullopt;
        only = line;
    }
    if (only.compare(ListRequest, Qt::CaseInsensitive) == 0)
        return DncRequest{DncRequest::Kind::List, {}, {}};
    if (only.size() < form.Before.size() + form.After.size() ||
        !only.startsWith(form.Before, Qt::CaseInsensitive) || !only.endsWith(form.After, Qt::CaseInsensitive))
        return std::nullopt;
    const QString asked =
        TrimBlanks(only.mid(form.Before.size(), only.size() - form.Before.size() - form.After.size()));
    const qsizetype slash = asked.lastIndexOf(u'\\');
    if (slash < 0)
        return DncRequest{DncRequest::Kind::Program, {}, asked};
    return DncRequest{DncRequest::Kind::Program, TrimBlanks(asked.left(slash)),
                      TrimBlanks(asked.mid(slash + 1))};
}

DncAnswer AnswerDncRequest(const FileSystem& files, const GlobalSettings& g, const QString& machineDir,
                           const DncRequest& request) {
    const QStringList directories = DataDirectories(files, g, machineDir);
    if (request.What == DncRequest::Kind::List) {
        QString text = QStringLiteral("(PROGRAMS OF ") + machineDir + QStringLiteral(")\r\n");
        for (const QString& directory : directories)
            for (const QString& file :
                 files.List(PathJoin(g, machineDir, directory), QStringLiteral("*.prg"), EntryKinds::Files))
                text += u'(' + directory + u'\\' + StripExtension(file) + QStringLiteral(")\r\n");
        return {QString(), QStringLiteral("DIR"), ToBytes(text), QStringLiteral("sent on request")};
    }

    const QString asked =
        request.Directory.isEmpty() ? request.Name : request.Directory + u'\\' + request.Name;
    if (!AcceptableOutsideName(request.Name))
        return NotFound(asked, QStringLiteral("not a plain name"));
    QStringList searched = directories;
    if (!request.Directory.isEmpty()) {
        // Only a directory of this machine: nothing named from the line leaves its tree.
        const auto own = std::find_if(directories.cbegin(), directories.cend(), [&](const QString& d) {
            return d.compare(request.Directory, Qt::CaseInsensitive) == 0;
        });
        if (!AcceptableOutsideName(request.Directory) || own == directories.cend())
            return NotFound(asked, QStringLiteral("no such directory of ") + machineDir);
        searched = {*own};
    }
    for (const QString& directory : searched) {
        const std::optional<QString> path =
            FileInDirectory(PathJoin(g, machineDir, directory), request.Name, QStringLiteral("prg"));
        if (!path || !files.IsFile(*path))
            continue;
        // The program as it is spelled on the disk, whatever letter case the control used.
        const QStringList stored = files.Find(*path, EntryKinds::Files);
        const QString name = stored.isEmpty() ? LastComponent(*path) : stored.first();
        return {directory, StripExtension(name), ReadAllBytes(files, *path),
                QStringLiteral("sent on request")};
    }
    return NotFound(asked, QStringLiteral("no such program"));
}

} // namespace kestrova
