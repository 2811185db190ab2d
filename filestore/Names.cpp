#include "filestore/Names.h"

#include "platform/Blanks.h"
#include "settings/SettingsLine.h"

namespace kestrova {

QString PathJoin(const GlobalSettings& g, const QString& machineDir, const QString& name) {
    const QString sub = TrimBlanks(name);
    if (HasColon(sub))
        return sub.left(2) + u'\\';
    return g.RootPath + TrimBlanks(machineDir) + u'\\' + sub + u'\\';
}

bool DriveExists(const FileSystem& files, const QString& name) {
    const QString drive = TrimBlanks(name);
    if (drive.isEmpty())
        return false;
    return files.DriveReady(drive.at(0));
}

QString StripExtension(const QString& name) {
    const QString trimmed = TrimBlanks(name);
    const qsizetype dot = trimmed.lastIndexOf(u'.');
    if (trimmed.isEmpty() || dot < 0)
        return trimmed;
    return TrimBlanks(trimmed.left(dot));
}

QString GetExtension(const QString& name) {
    const QString trimmed = TrimBlanks(name);
    const qsizetype len = trimmed.size();
    if (len < 2 || !trimmed.contains(u'.'))
        return {};
    // Positions counted from 1: Len down to max(Len - 3, 2).
    for (qsizetype pos = len; pos >= qMax<qsizetype>(len - 3, 2); --pos) {
        if (trimmed.at(pos - 1) == u'.')
            return trimmed.mid(pos);
    }
    return {};
}

QString LastComponent(const QString& path) {
    const QString trimmed = TrimBlanks(path);
    qsizetype cut = -1;
    for (qsizetype i = trimmed.size() - 1; i >= 0; --i) {
        const QChar c = trimmed.at(i);
        if (c == u'/' || c == u'\\' || c == u':') {
            cut = i;
            break;
        }
    }
    return trimmed.mid(cut + 1);
}

QString NumberText(long long number) {
    return QString::number(number);
}

bool StaysInDirectory(const QString& name) {
    if (name.isEmpty() || name == QLatin1String(".") || name == QLatin1String(".."))
        return false;
    for (const QChar c : name) {
        if (c == u'\\' || c == u'/' || c == u':' || c.unicode() < 32 || c.unicode() == 127)
            return false;
    }
    return true;
}

std::optional<QString> FileInDirectory(const QString& directory, const QString& name,
                                       const QString& extension) {
    if (!StaysInDirectory(name))
        return std::nullopt;
    return extension.isEmpty() ? directory + name : directory + name + u'.' + extension;
}

bool AcceptableOutsideName(const QString& name) {
    return name.size() <= 32 && StaysInDirectory(name);
}

bool AcceptableNewName(const QString& name) {
    const QString trimmed = TrimBlanks(name);
    return AcceptableOutsideName(trimmed) && !trimmed.contains(u'*') && !trimmed.contains(u'?');
}

} // namespace kestrova
