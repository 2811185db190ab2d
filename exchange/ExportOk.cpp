#include "exchange/ExportOk.h"

#include "exchange/CountText.h"
#include "exchange/ExportFile.h"
#include "filestore/DriveCheck.h"
#include "filestore/Names.h"
#include "platform/Blanks.h"
#include "platform/FileBatch.h"

namespace kestrova {

ExportOutcome ExportOk_Click(Session& session, const ExportRequest& request) {
    MessageService& messages = session.messages;
    QString target = TrimBlanks(request.target);
    if (!target.endsWith(u'\\'))
        target += u'\\';
    const QString quotedTarget = Quoted(target);
    const bool eightChar = request.format == ExportFormat::EightCharacter;
    QString newName;
    Answer answer = Answer::No;
    if (request.singleList) {
        if (request.selected.isEmpty()) {
            messages.Report(QStringLiteral("No File Selected !"));
            return ExportOutcome::Stay;
        }
        newName = TrimBlanks(request.newName);
        const int limit = eightChar ? 8 : 64;
        if (newName.isEmpty() || newName.size() > limit || !StaysInDirectory(newName)) {
            messages.Report(QStringLiteral("Invalid Filename !"));
            return ExportOutcome::FocusName;
        }
        answer = messages.Ask(QStringLiteral("Export \"") + request.selected.first() +
                              QStringLiteral("\"\nTo ") + quotedTarget + QStringLiteral(" ?"));
    } else {
        if (request.selected.isEmpty()) {
            messages.Report(QStringLiteral("No Files Selected !"));
            return ExportOutcome::Stay;
        }
        answer = messages.Ask(QStringLiteral("Export ") + NumberText(request.selected.size()) +
                              QStringLiteral(" Files\nTo ") + quotedTarget + QStringLiteral(" ?"));
    }
    session.settings.LastAnswer = Int16::From(int(answer));
    if (answer != Answer::Yes)
        return ExportOutcome::Stay;
    if (!DriveReadyAfterRetry(session, target, DiscNotReady))
        return ExportOutcome::FocusDrive;
    Int16 count = 0;
    {
        const BusyCursor busy(messages);
        FileBatch batch(session.files);
        const QStringList names = request.singleList ? request.selected.mid(0, 1) : request.selected;
        for (const QString& name : names) {
            count += Int16::From(ExportFile(session, session.settings.CurrentPath, name, target,
                                            request.singleList ? newName : name, request.mode,
                                            request.format == ExportFormat::Lookup, eightChar,
                                            TrimBlanks(request.extension)));
        }
        batch.Finish();
    }
    messages.Report(
        CountText(count, QStringLiteral("File"), QStringLiteral("Files"), QStringLiteral("Exported !")));
    ExportSettings settings;
    settings.format = request.format;
    settings.extension = TrimBlanks(request.extension);
    settings.mode = request.mode;
    settings.list = request.singleList ? 1 : 2;
    settings.target = target;
    WriteExportSettings(session.files, session.settings, settings);
    return ExportOutcome::Exported;
}

} // namespace kestrova
