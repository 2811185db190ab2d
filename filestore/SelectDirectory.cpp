#include "filestore/SelectDirectory.h"

#include "filestore/Names.h"
#include "platform/Blanks.h"
#include "settings/KestrovaCfg.h"
#include "settings/SettingsLine.h"

namespace kestrova {

namespace {

bool Unusable(const QString& name) {
    return name.isEmpty() || name == QLatin1String(".") || name == QLatin1String("..") ||
           name.compare(QLatin1String("EXSUBS"), Qt::CaseInsensitive) == 0;
}

} // namespace

void SelectDirectory(Session& session, const QString& name) {
    GlobalSettings& g = session.settings;
    FileSystem& files = session.files;
    const QString machineBase = g.RootPath + g.MachineDir + u'\\';

    QString chosen = TrimBlanks(name);
    if (HasColon(chosen)) {
        if (!DriveExists(files, chosen))
            chosen.clear();
    } else if (!chosen.isEmpty() && !files.IsDirectory(machineBase + chosen)) {
        chosen.clear();
    }
    if (Unusable(chosen)) {
        // The first entry of the machine directory as it comes, plain files included: kept as
        // the suite has always done it.
        chosen.clear();
        for (const QString& entry : files.List(machineBase, QStringLiteral("*.*"), EntryKinds::Both)) {
            if (!Unusable(entry)) {
                chosen = entry;
                break;
            }
        }
    }
    // The environment keeps its directory until the file says the new one: a rewrite that fails
    // leaves both telling the same story.
    const QString previous = g.CurrentDir;
    g.CurrentDir = chosen;
    try {
        WriteKestrovaCfg(session);
    } catch (...) {
        g.CurrentDir = previous;
        throw;
    }
    g.CurrentPath = PathJoin(g, g.MachineDir, g.CurrentDir);
}

} // namespace kestrova
