#include "comms/ReceiveFormLogic.h"

#include "comms/DncState.h"
#include "comms/ReceivedOver.h"
#include "comms/TransferLog.h"
#include "comms/UnfiledProgram.h"
#include "filestore/KeyFilter.h"
#include "filestore/LastFile.h"
#include "filestore/Listings.h"
#include "filestore/Names.h"
#include "platform/Blanks.h"

namespace kestrova {

namespace {

const QString TempName = QStringLiteral("Commstmp.prg");
constexpr int NameMode = -32; // the name box's key filter

} // namespace

ReceiveFormLogic::ReceiveFormLogic(Session& session, GeneralReceive& receive)
    : m_session(session), m_receive(receive) {}

void ReceiveFormLogic::Form_Load() {
    GlobalSettings& g = m_session.settings;
    m_tempPath = g.ProgramPath + TempName;
    m_receive.SetSettings(ReadReceiveSettings(m_session.files, MachineFile(g, QStringLiteral("cms"))));
    g.CommsMachineDir = g.MachineDir;
    g.CommsDirectory = g.CurrentDir;
}

bool ReceiveFormLogic::ExecutiveMode() const {
    return m_session.settings.ReceiveOperation == 6;
}

QString ReceiveFormLogic::Caption() const {
    return ExecutiveMode() ? QStringLiteral("Communications - Receive Executive")
                           : QStringLiteral("Communications - Receive Program");
}

QString ReceiveFormLogic::NameLabel() const {
    return ExecutiveMode() ? QStringLiteral("Executive Name") : QStringLiteral("Program Name");
}

void ReceiveFormLogic::FillDirectories(ListModel& list) {
    const GlobalSettings& g = m_session.settings;
    FillDirectoryList(m_session, list, g.CommsMachineDir, g.CommsDirectory, false, true, Selection::Named);
}

void ReceiveFormLogic::DirectoryChosen(const QString& name) {
    if (!TrimBlanks(name).isEmpty())
        m_session.settings.CommsDirectory = TrimBlanks(name);
}

ReceiveOkOutcome ReceiveFormLogic::ReceiveOk_Click(const QString& nameText) {
    GlobalSettings& g = m_session.settings;
    FileSystem& files = m_session.files;
    MessageService& messages = m_session.messages;
    const Int16 operation = g.ReceiveOperation;
    if (operation != 2 && operation != 4 && operation != 6)
        return ReceiveOkOutcome::Close;

    const QString name = TrimBlanks(nameText);
    const std::optional<QString> stored =
        FileInDirectory(PathJoin(g, g.CommsMachineDir, g.CommsDirectory), name, QStringLiteral("prg"));
    if (!NameFitsFilter(name, NameMode) || !stored) {
        messages.Refuse(InvalidFileName);
        return ReceiveOkOutcome::StayOnName;
    }
    const QString& target = *stored;
    if (files.Exists(target)) {
        messages.Beep();
        const Answer answer = messages.Ask(OverwriteQuestion(name));
        g.LastAnswer = Int16::From(int(answer));
    } else {
        g.LastAnswer = Int16::From(int(Answer::Yes));
    }
    if (g.LastAnswer == int(Answer::No))
        return ReceiveOkOutcome::StayOnName;

    // A port the DNC service holds cannot be opened here: say who holds it.
    if (const std::optional<DncState> service = ReadDncState(files, g.SystemPath);
        service && service->Holding(m_receive.Settings().Port)) {
        messages.Refuse(service->HeldText(m_receive.Settings().Port));
        return ReceiveOkOutcome::StayOnName;
    }
    if (operation != 2) {
        // The Westinghouse Producer's receives are a dialogue of control characters that this
        // system does not carry out: say so rather than wait for a program that cannot come.
        messages.Report(DialogueNotSupported);
        return ReceiveOkOutcome::Close;
    }
    // A temporary file left from an earlier receive holds a program that was never stored
    // (moving it away failed then): it is moved now, before this receive would replace it.
    if (files.IsFile(m_tempPath)) {
        QString failure;
        const QString kept = KeepUnfiled(files, g.ProgramPath, m_tempPath, failure);
        if (kept == m_tempPath) {
            messages.ShowError(failure + QStringLiteral("\nAn Earlier Program Is Kept In ") + Quoted(kept) +
                               QStringLiteral(" !"));
            return ReceiveOkOutcome::StayOnName;
        }
        messages.Report(QStringLiteral("An Earlier Program Is Kept In ") + Quoted(kept) +
                        QStringLiteral(" !"));
    }
    TransferRecord record{g.CommsMachineDir, m_receive.Settings().Port, name, 0, QStringLiteral("received")};
    try {
        m_receive.Run(files, name, m_tempPath);
    } catch (const SystemError& e) {
        record.Result = QStringLiteral("failed: ") + e.text();
        AppendTransferLog(m_session, record);
        throw;
    }
    record.Bytes = files.IsFile(m_tempPath) ? files.Length(m_tempPath) : 0;

    if (!files.IsFile(m_tempPath) || m_receive.Aborted()) {
        record.Result = m_receive.LostMessage().isEmpty()
                            ? QStringLiteral("aborted")
                            : QStringLiteral("failed: ") + m_receive.LostMessage();
        AppendTransferLog(m_session, record);
        // A lost line has its own message, naming the port; the operator sees that one only.
        // What a device server's dropped connection cut off is kept, told in the same message.
        if (!m_receive.LostMessage().isEmpty() && files.IsFile(m_tempPath) && files.Length(m_tempPath) > 0) {
            QString failure;
            const QString kept = KeepUnfiled(files, g.ProgramPath, m_tempPath, failure);
            messages.ShowError(KeptUnfiledText(m_receive.LostMessage(), kept, failure));
            return ReceiveOkOutcome::Close;
        }
        if (!m_receive.LostMessage().isEmpty())
            messages.ShowError(m_receive.LostMessage());
        else
            messages.Report(QStringLiteral("Nothing Received !"));
        if (files.IsFile(m_tempPath))
            files.Delete(m_tempPath);
        return ReceiveOkOutcome::Close;
    }

    if (files.IsFile(m_tempPath)) {
        const ReceivedOver over(m_session, target, m_receive.Settings().Port);
        try {
            // Replaced whole: until the new text is complete the old one stays, and a link stays
            // a link.
            files.Copy(m_tempPath, target);
            record.Result += over.Told();
        } catch (const SystemError& e) {
            record.Result = QStringLiteral("failed: ") + e.text();
            AppendTransferLog(m_session, record);
            // The program is not lost: it is moved out of the temporary file, which the next
            // receive replaces, and the operator is told where it is.
            QString failure;
            const QString kept = KeepUnfiled(files, g.ProgramPath, m_tempPath, failure);
            QString text =
                e.text() + QStringLiteral("\nThe Program Is Kept In ") + Quoted(kept) + QStringLiteral(" !");
            if (!failure.isEmpty())
                text += u'\n' + failure;
            messages.ShowError(text);
            return ReceiveOkOutcome::Close;
        }
        files.Delete(m_tempPath);
        if (g.CommsMachineDir.compare(g.MachineDir, Qt::CaseInsensitive) == 0 && !ExecutiveMode())
            RememberLastFile(m_session, g.CommsDirectory, name);
    }
    AppendTransferLog(m_session, record);
    messages.Report(Quoted(name) + QStringLiteral(" Received !"));
    return ReceiveOkOutcome::Close;
}

} // namespace kestrova
