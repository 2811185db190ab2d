#include "filestore/DrawingRestore.h"

#include "filestore/HistoryOperations.h"
#include "filestore/LastFile.h"
#include "filestore/Names.h"
#include "filestore/ProgramHistory.h"
#include "filestore/SelectDirectory.h"
#include "platform/Blanks.h"

namespace kestrova {

namespace {} // namespace

bool RestorableDrawing(Session& session) {
    return session.files.IsFile(session.settings.RestoreStem + QStringLiteral("drw"));
}

RestoreOutcome RestoreDrawing(Session& session, const QString& name, const QString& directory) {
    const GlobalSettings& g = session.settings;
    MessageService& messages = session.messages;
    FileSystem& files = session.files;
    const QString n = TrimBlanks(name);
    const QString d = TrimBlanks(directory);
    if (!AcceptableNewName(n) || n == QLatin1String("Auto-Reposition")) {
        messages.Refuse(QStringLiteral("Invalid Drawing Name !"));
        return RestoreOutcome::FocusName;
    }
    if (d.isEmpty()) {
        messages.Refuse(QStringLiteral("No Directory Selected !"));
        return RestoreOutcome::FocusList;
    }
    const QString target = g.RootPath + g.MachineDir + u'\\' + d + u'\\' + n + u'.';
    if (files.IsFile(target + QStringLiteral("drw")) &&
        messages.Ask(QStringLiteral("Drawing ") + Quoted(n) +
                     QStringLiteral("\n\nAlready Exists!  Overwrite it ?")) != Answer::Yes)
        return RestoreOutcome::Stay;
    if (!RestorableDrawing(session)) {
        messages.Refuse(QStringLiteral("No Drawing Restored !"));
        return RestoreOutcome::Done;
    }
    KeepPreviousVersion(session, target + QStringLiteral("drw"), RestoredFromUndo);
    files.Copy(g.RestoreStem + QStringLiteral("drw"), target + QStringLiteral("drw"));
    const QString undoArea = g.RestoreStem.left(g.RestoreStem.lastIndexOf(u'\\') + 1);
    for (const QString& companion : files.Find(g.RestoreStem + QStringLiteral("b*"), EntryKinds::Files)) {
        // A companion whose extension is too long to keep would land on the file without
        // extension, which belongs to the family's program.
        const QString extension = GetExtension(companion);
        if (!extension.isEmpty())
            files.Copy(undoArea + companion, target + extension);
    }
    messages.Report(QStringLiteral("Last Modified Drawing Restored As\n\n") + Quoted(n));
    if (d.compare(g.CurrentDir, Qt::CaseInsensitive) != 0)
        SelectDirectory(session, d);
    RememberLastFile(session, d, n);
    return RestoreOutcome::Done;
}

} // namespace kestrova
