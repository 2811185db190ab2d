#include "exchange/ImportOk.h"

#include "exchange/CountText.h"
#include "exchange/FamilyCopy.h"
#include "exchange/ImportFile.h"
#include "filestore/DriveCheck.h"
#include "filestore/Names.h"
#include "filestore/SelectDirectory.h"
#include "platform/Blanks.h"
#include "platform/FileBatch.h"
#include "settings/SettingsLine.h"

namespace kestrova {

QString& LastImportSource() {
    static QString source;
    return source;
}

namespace {

// Imports one sub-routine into the suite's sub-routine directory; 0 when declined.
int ImportSubRoutine(Session& session, const QString& source, const QString& name) {
    const QString subs = session.settings.RevSubsPath;
    if (session.files.IsFile(subs + name)) {
        if (!AskOverwrite(session, name))
            return 0;
        session.files.Delete(subs + name);
    }
    session.files.Copy(source + name, subs + name);
    return 1;
}

// The checks, the question and the drive check, then each selected file or sub-routine and the
// count report.
ImportOutcome ImportSelected(Session& session, const ImportRequest& request, const QString& source) {
    MessageService& messages = session.messages;
    const bool subRoutines = request.mode == 5;
    const QStringList& names = request.selected;
    if (names.isEmpty()) {
        messages.Report(subRoutines ? QStringLiteral("No Sub-Routines Selected !")
                                    : QStringLiteral("No Files Selected !"));
        return ImportOutcome::Stay;
    }
    const QString to =
        QStringLiteral("\nTo \"") + TrimBlanks(request.targetDirectory) + QStringLiteral("\" ?");
    QString question;
    if (names.size() == 1)
        question =
            QStringLiteral("Import \"") + names.first() + (subRoutines ? QStringLiteral("\" ?") : u'"' + to);
    else
        question = QStringLiteral("Import ") + NumberText(names.size()) +
                   (subRoutines ? QStringLiteral(" Sub-Routines ?") : QStringLiteral(" Files") + to);
    const Answer answer = messages.Ask(question);
    session.settings.LastAnswer = Int16::From(int(answer));
    if (answer != Answer::Yes)
        return ImportOutcome::Stay;
    if (!DriveReadyAfterRetry(session, source, DiscNotReady))
        return ImportOutcome::FocusDrive;
    Int16 count = 0;
    {
        const BusyCursor busy(messages);
        FileBatch batch(session.files);
        for (const QString& name : names)
            count +=
                Int16::From(subRoutines ? ImportSubRoutine(session, source, name)
                                        : ImportFile(session, source, session.settings.CurrentPath, name));
        batch.Finish();
    }
    messages.Report(subRoutines ? CountText(count, QStringLiteral("Sub-Routine"),
                                            QStringLiteral("Sub-Routines"), QStringLiteral("Imported !"))
                                : CountText(count, QStringLiteral("File"), QStringLiteral("Files"),
                                            QStringLiteral("Imported !")));
    return ImportOutcome::Done;
}

} // namespace

ImportOutcome ImportOk_Click(Session& session, const ImportRequest& request) {
    GlobalSettings& g = session.settings;
    if (request.mode != 1 && request.mode != 2 && request.mode != 5)
        return ImportOutcome::Stay;
    const QString targetText = TrimBlanks(request.targetDirectory);
    if (targetText.compare(g.CurrentDir, Qt::CaseInsensitive) != 0 && HasColon(targetText) &&
        !DriveReadyOrRefused(session, targetText, QStringLiteral("Target Disk Not Ready !")))
        return ImportOutcome::FocusTarget;
    if (targetText.isEmpty()) {
        session.messages.Report(QStringLiteral("No Target Directory Selected !"));
        return ImportOutcome::FocusTarget;
    }
    SelectDirectory(session, targetText);
    QString source = TrimBlanks(request.source);
    if (!source.endsWith(u'\\'))
        source += u'\\';
    const ImportOutcome outcome = ImportSelected(session, request, source);
    LastImportSource() = source;
    return outcome;
}

} // namespace kestrova
