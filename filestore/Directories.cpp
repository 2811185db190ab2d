#include "filestore/Directories.h"

#include "filestore/DriveCheck.h"
#include "filestore/Names.h"
#include "filestore/SelectDirectory.h"
#include "platform/Blanks.h"
#include "settings/SettingsLine.h"

namespace kestrova {

namespace {

QString AlreadyExists(const QString& name) {
    return QStringLiteral("Directory ") + Quoted(name) + QStringLiteral(" Already Exists !");
}

// Deletes the files of a directory, looking twice: a first pass that leaves files (one written
// meanwhile) is followed by a second.
void DeleteFilesOf(FileSystem& files, const QString& directory) {
    for (int pass = 0; pass < 2; ++pass) {
        const QStringList left = files.List(directory, QStringLiteral("*.*"), EntryKinds::Files);
        if (left.isEmpty())
            return;
        for (const QString& file : left)
            files.Delete(directory + file);
    }
}

} // namespace

bool DirectoryExists(Session& session, const QString& machineDir, const QString& name) {
    QString path = PathJoin(session.settings, machineDir, name);
    path.chop(1);
    return session.files.Exists(path);
}

DirectoryFormLayout DirectoryFormLayoutOf(int action) {
    switch (action) {
    case 1:
        return {QStringLiteral("Change Directory"), QStringLiteral("Select Directory"), {}, true, true};
    case 2:
        return {QStringLiteral("Create New Directory"), {}, QStringLiteral("Directory Name"), false, false};
    case 3:
        return {QStringLiteral("Rename Directory"), QStringLiteral("Rename Directory"), QStringLiteral("As"),
                false, false};
    default:
        return {QStringLiteral("Delete Directory"), QStringLiteral("Delete Directory"), {}, false, false};
    }
}

DirectoryOkOutcome DirectoryOk(Session& session, int action, const QString& chosen, const QString& typed) {
    const GlobalSettings& g = session.settings;
    MessageService& messages = session.messages;
    FileSystem& files = session.files;
    const QString entry = TrimBlanks(chosen);
    const QString name = TrimBlanks(typed);
    const QString base = g.RootPath + g.MachineDir + u'\\';

    if (action != 2 && entry.isEmpty()) {
        messages.Refuse(QStringLiteral("No Directory Selected !"));
        return DirectoryOkOutcome::FocusList;
    }
    switch (action) {
    case 1:
        if (HasColon(entry) && !DriveReadyOrRefused(session, entry, DiscNotReady))
            return DirectoryOkOutcome::FocusList;
        SelectDirectory(session, HasColon(entry) ? entry.left(2) : entry);
        return DirectoryOkOutcome::Done;
    case 2:
    case 3:
        if (!AcceptableNewName(name)) {
            messages.Refuse(QStringLiteral("Invalid Directory Name !"));
            return DirectoryOkOutcome::FocusBox;
        }
        if (DirectoryExists(session, g.MachineDir, name)) {
            messages.Refuse(AlreadyExists(name));
            return DirectoryOkOutcome::FocusBox;
        }
        if (action == 2) {
            files.MakeDirectory(base + name);
            return DirectoryOkOutcome::Done;
        }
        if (messages.Ask(QStringLiteral("Rename ") + Quoted(entry) + QStringLiteral("\nAs ") + Quoted(name) +
                         QStringLiteral(" ?")) != Answer::Yes)
            return DirectoryOkOutcome::Stay;
        files.Rename(base + entry, base + name);
        return DirectoryOkOutcome::Done;
    default:
        break;
    }

    // Delete.
    if (messages.Ask(QStringLiteral("Delete ") + Quoted(entry) + QStringLiteral(" !")) != Answer::Yes)
        return DirectoryOkOutcome::Stay;
    const QString directory = base + entry + u'\\';
    if (!files.List(directory, QStringLiteral("*.*"), EntryKinds::Files).isEmpty()) {
        messages.Beep();
        if (messages.Ask(QStringLiteral("Directory ") + Quoted(entry) +
                         QStringLiteral(" Is Not Empty !\n\nDelete it Anyway ?")) != Answer::Yes)
            return DirectoryOkOutcome::Stay;
    }
    DeleteFilesOf(files, directory);
    files.RemoveDirectory(base + entry);
    return DirectoryOkOutcome::Done;
}

} // namespace kestrova
