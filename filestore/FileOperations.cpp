#include "filestore/FileOperations.h"

#include "filestore/DriveCheck.h"
#include "filestore/FileFamily.h"
#include "filestore/Names.h"
#include "platform/Blanks.h"
#include "settings/SettingsLine.h"

#include <functional>

namespace kestrova {

namespace {

// Runs the family operations of a batch; one that fails stops the batch with its message.
// Returns the families done.
Int16 RunBatch(Session& session, const QStringList& names, const std::function<int(const QString&)>& one) {
    Int16 done = 0;
    try {
        for (const QString& name : names)
            done += Int16::From(one(name));
    } catch (const SystemError& error) {
        session.messages.ShowError(error.text());
        return -1;
    }
    return done;
}

} // namespace

FileFormLayout FileFormLayoutOf(int action, int machineCount) {
    const QString machine = machineCount > 1 ? QStringLiteral("For Machine") : QString();
    switch (action) {
    case 1:
        return {QStringLiteral("Delete Files"),
                QStringLiteral("Delete Files"),
                QStringLiteral("In Directory"),
                {},
                {},
                {},
                true};
    case 2:
        return {QStringLiteral("Rename File"),
                QStringLiteral("Rename File"),
                QStringLiteral("In Directory"),
                QStringLiteral("As"),
                {},
                {},
                false};
    case 3:
        return {QStringLiteral("Copy File"),
                QStringLiteral("Copy File"),
                QStringLiteral("In Directory"),
                QStringLiteral("As"),
                {},
                {},
                false};
    case 4:
        return {QStringLiteral("Move Files"),
                QStringLiteral("Move Files"),
                QStringLiteral("From Directory"),
                {},
                QStringLiteral("To Directory"),
                machine,
                true};
    default:
        return {QStringLiteral("Copy Files"),
                QStringLiteral("Copy Files"),
                QStringLiteral("From Directory"),
                {},
                QStringLiteral("To Directory"),
                machine,
                true};
    }
}

QString CountMessage(int count, const QString& verb) {
    if (count == 1)
        return QStringLiteral("1 File ") + verb + QStringLiteral(" !");
    if (count == 0)
        return QStringLiteral("No Files ") + verb + QStringLiteral(" !");
    return NumberText(count) + QStringLiteral(" Files ") + verb + QStringLiteral(" !");
}

QString MachineDirOf(const GlobalSettings& g, int number) {
    for (int n = 1; n <= g.MachineCount && n < g.MachineTable.size(); ++n)
        if (g.MachineTable.at(n).number == number)
            return TrimBlanks(g.MachineTable.at(n).field2);
    return {};
}

FileOkOutcome FileOk(Session& session, const FileChoice& choice) {
    GlobalSettings& g = session.settings;
    MessageService& messages = session.messages;
    const QString source = g.CurrentPath;
    const int kind = choice.kind;
    const QString newName = TrimBlanks(choice.newName);

    switch (choice.action) {
    case 1: {
        if (choice.names.isEmpty()) {
            messages.Refuse(QStringLiteral("No Files Selected !"));
            return FileOkOutcome::FocusFileList;
        }
        const QString question =
            choice.names.size() == 1
                ? QStringLiteral("Delete ") + Quoted(choice.names.first()) + QStringLiteral(" ?")
                : QStringLiteral("Delete ") + NumberText(choice.names.size()) + QStringLiteral(" Files ?");
        if (messages.Ask(question) != Answer::Yes)
            return FileOkOutcome::FocusFileList;
        const Int16 done = RunBatch(session, choice.names, [&](const QString& name) {
            DeleteFamily(session, source, name, kind);
            return 1;
        });
        if (done >= 0)
            messages.Report(CountMessage(done, QStringLiteral("Deleted")));
        return FileOkOutcome::Done;
    }
    case 2:
    case 3: {
        if (choice.names.isEmpty()) {
            messages.Refuse(QStringLiteral("No File Selected !"));
            return FileOkOutcome::FocusFileList;
        }
        if (!AcceptableNewName(newName)) {
            messages.Refuse(QStringLiteral("Invalid File Name !"));
            return FileOkOutcome::FocusFileBox;
        }
        const bool rename = choice.action == 2;
        const QString old = choice.names.first();
        const QString question = (rename ? QStringLiteral("Rename ") : QStringLiteral("Copy ")) +
                                 Quoted(old) + QStringLiteral("\nAs ") + Quoted(newName) +
                                 QStringLiteral(" ?");
        if (messages.Ask(question) != Answer::Yes)
            return FileOkOutcome::FocusFileBox;
        const Int16 done = RunBatch(session, {old}, [&](const QString& name) {
            return rename ? MoveFamily(session, source, name, source, newName, kind)
                          : CopyFamily(session, source, name, source, newName, kind);
        });
        if (done >= 0)
            messages.Report(
                rename
                    ? (done == 1 ? QStringLiteral("1 File Renamed !") : QStringLiteral("No Files Renamed !"))
                    : (done == 1 ? QStringLiteral("1 File Copied !") : QStringLiteral("No Files Copied !")));
        return FileOkOutcome::Done;
    }
    default:
        break;
    }

    // Move to and copy to.
    const bool move = choice.action == 4;
    const QString destination = TrimBlanks(choice.destination);
    if (choice.names.isEmpty()) {
        messages.Refuse(QStringLiteral("No Files Selected !"));
        return FileOkOutcome::FocusFileList;
    }
    if (destination.isEmpty()) {
        messages.Refuse(QStringLiteral("No Directory Selected !"));
        return FileOkOutcome::FocusDirectoryList;
    }
    if (choice.machineChoice && choice.machineNumber < 1) {
        messages.Refuse(QStringLiteral("No Machine Selected !"));
        return FileOkOutcome::FocusMachineList;
    }
    const QString verb = move ? QStringLiteral("Move ") : QStringLiteral("Copy ");
    const QString what = choice.names.size() == 1
                             ? Quoted(choice.names.first())
                             : NumberText(choice.names.size()) + QStringLiteral(" Files");
    if (messages.Ask(verb + what + QStringLiteral("\nTo ") + Quoted(destination) + QStringLiteral(" ?")) !=
        Answer::Yes)
        return FileOkOutcome::FocusDirectoryList;
    const QString machineDir = choice.machineChoice ? MachineDirOf(g, choice.machineNumber) : g.MachineDir;
    if (HasColon(destination) && !DriveReadyOrRefused(session, destination, DiscNotReady))
        return FileOkOutcome::FocusDirectoryList;
    const QString target = PathJoin(g, machineDir, destination);
    const Int16 done = RunBatch(session, choice.names, [&](const QString& name) {
        return move ? MoveFamily(session, source, name, target, name, kind)
                    : CopyFamily(session, source, name, target, name, kind);
    });
    if (done >= 0)
        messages.Report(CountMessage(done, move ? QStringLiteral("Moved") : QStringLiteral("Copied")));
    return FileOkOutcome::Done;
}

} // namespace kestrova
