#include "filestore/LastFile.h"

#include "filestore/Names.h"
#include "platform/Blanks.h"
#include "settings/ListRecordReader.h"
#include "settings/SettingsFile.h"
#include "settings/SettingsLine.h"

namespace kestrova {

namespace {

QString LastFilePath(const GlobalSettings& g) {
    return g.ProgramPath + QStringLiteral("Lastfile.lst");
}

QString ExtensionOfKind(int kind) {
    switch (kind) {
    case 1:
        return QStringLiteral("drw");
    case 2:
        return QStringLiteral("prg");
    default:
        return QStringLiteral("*");
    }
}

} // namespace

void ClearLastFile(Session& session) {
    WriteSettingsFile(session.files, LastFilePath(session.settings), {});
}

void RememberLastFile(Session& session, const QString& directory, const QString& name) {
    const QString dir = TrimBlanks(directory);
    const QString file = TrimBlanks(name);
    if (dir.isEmpty() || file.isEmpty() || HasColon(dir))
        return;
    WriteSettingsFile(session.files, LastFilePath(session.settings), {dir, file});
}

bool RecallLastFile(Session& session, QString& directory, QString& name, int kind) {
    const GlobalSettings& g = session.settings;
    FileSystem& files = session.files;
    const QString path = LastFilePath(g);
    directory.clear();
    name.clear();
    if (!files.IsFile(path))
        return false;
    const QString first = ReadFirstLine(files, path);
    if (first == EndMarker || first.isEmpty())
        return false;

    bool found = false;
    try {
        // Read again as items: a comma inside a remembered name ends it there.
        ListRecordReader reader(files, path);
        directory = TrimBlanks(reader.ReadItem());
        name = TrimBlanks(reader.ReadItem());
        found = !name.isEmpty() &&
                !files
                     .Find(PathJoin(g, g.MachineDir, directory) + name + u'.' + ExtensionOfKind(kind),
                           EntryKinds::Files)
                     .isEmpty();
    } catch (const InputPastEndError&) {
        // A memory cut short by hand holds no file.
    }
    if (!found) {
        directory.clear();
        name.clear();
        ClearLastFile(session);
    }
    return found;
}

QString LastFileHere(Session& session) {
    const GlobalSettings& g = session.settings;
    QString directory;
    QString name;
    if (!RecallLastFile(session, directory, name, 3) ||
        directory.compare(g.CurrentDir, Qt::CaseInsensitive) != 0)
        return {};
    for (const char* extension : {".prg", ".drw"})
        if (session.files.IsFile(g.CurrentPath + name + extension))
            return name + QLatin1String(extension);
    return {};
}

} // namespace kestrova
