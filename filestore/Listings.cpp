#include "filestore/Listings.h"

#include "filestore/Names.h"
#include "platform/Blanks.h"

namespace kestrova {

namespace {

const QString Exsubs = QStringLiteral("EXSUBS");

bool SameName(const QString& a, const QString& b) {
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

void ApplySelection(ListModel& list, Selection selection, int remembered) {
    switch (selection) {
    case Selection::None:
        list.selected = -1;
        break;
    case Selection::First:
        list.selected = list.Count() > 0 ? 0 : -1;
        break;
    case Selection::Named:
        list.selected = remembered;
        break;
    }
}

} // namespace

void FillDirectoryList(Session& session, ListModel& list, const QString& machineDir,
                       const QString& currentName, bool withDrives, bool keepCurrent, Selection selection) {
    const GlobalSettings& g = session.settings;
    FileSystem& files = session.files;
    list.Clear();
    int remembered = -1;
    const QString current = TrimBlanks(currentName);

    const auto offer = [&](const QString& entry, bool isCurrent) {
        if (!isCurrent) {
            list.Add(entry);
        } else if (keepCurrent) {
            remembered = list.Add(entry);
        }
    };

    const QString base = g.RootPath + TrimBlanks(machineDir) + u'\\';
    for (const QString& name : files.List(base, QStringLiteral("*"), EntryKinds::Directories)) {
        const QString entry = LastComponent(name);
        if (entry == QLatin1String(".") || entry == QLatin1String("..") || SameName(entry, Exsubs))
            continue;
        offer(entry, SameName(entry, current));
    }

    if (withDrives) {
        const QString currentDrive = current.left(2);
        const QString systemDrive = g.SystemPath.left(2);
        const QList<DriveMapping> drives = files.Drives();
        for (const QChar floppy : {QChar('A'), QChar('B')}) {
            for (const DriveMapping& d : drives) {
                if (d.letter != floppy)
                    continue;
                const QString letter = QString(d.letter) + u':';
                offer(letter + QStringLiteral(" [Floppy Disk]"), SameName(letter, currentDrive));
            }
        }
        for (const DriveMapping& d : drives) {
            if (d.letter < u'C')
                continue;
            const QString letter = QString(d.letter) + u':';
            if (SameName(letter, systemDrive) || files.DriveType(d.letter) != DriveKind::Removable)
                continue;
            offer(letter + QStringLiteral(" [Removable Drive]"), SameName(letter, currentDrive));
        }
        files.ChangeDrive(g.ProgramPath);
        files.ChangeDirectory(g.ProgramPath);
    }

    ApplySelection(list, selection, remembered);
}

void FillFileList(Session& session, ListModel& list, const QString& machineDir, const QString& directory,
                  const QString& nameToSelect, Selection selection, int type, const QString& patternText) {
    BusyCursor busy(session.messages);
    list.Clear();
    int remembered = -1;
    const QString path = PathJoin(session.settings, machineDir, directory);

    QString pattern;
    bool joinNames = false;
    switch (type) {
    case 1:
        pattern = QStringLiteral("*.drw");
        break;
    case 2:
        pattern = QStringLiteral("*.prg");
        break;
    case 3:
        pattern = QStringLiteral("*.drw;*.prg");
        joinNames = true;
        break;
    default:
        pattern = TrimBlanks(patternText);
        joinNames = pattern.contains(u';');
        break;
    }
    if (pattern.isEmpty())
        return;

    const QString select = TrimBlanks(nameToSelect);
    QString lastAdded;
    bool any = false;
    for (const QString& file : session.files.List(path, pattern, EntryKinds::Files)) {
        const QString entry = StripExtension(file);
        if (joinNames && any && SameName(entry, lastAdded))
            continue;
        const int index = list.Add(entry);
        lastAdded = entry;
        any = true;
        if (SameName(entry, select))
            remembered = index;
    }
    ApplySelection(list, selection, remembered);
}

} // namespace kestrova
