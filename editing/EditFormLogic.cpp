#include "editing/EditFormLogic.h"

#include "editing/ProgramLines.h"
#include "editing/ProgramText.h"
#include "filestore/LastFile.h"
#include "filestore/Listings.h"
#include "filestore/Names.h"
#include "filestore/SelectDirectory.h"
#include "platform/Blanks.h"
#include "settings/EditorCommand.h"
#include "settings/SettingsLine.h"

namespace kestrova {

namespace {

constexpr int ProgramKind = 2;

} // namespace

void OpenInEditor(Session& session, ProgramLauncher& launcher, const QString& file) {
    // The editor runs on its own; nobody waits for it.
    (void)StartEditorOn(session, launcher, file);
}

EditFormLogic::EditFormLogic(Session& session, ProgramLauncher& launcher)
    : m_session(session), m_launcher(launcher), m_operation(session.settings.EditOperation) {}

EditFormLayout EditFormLogic::Layout() const {
    EditFormLayout layout;
    switch (EditOperation(m_operation)) {
    case EditOperation::EditProgram:
        layout.caption = QStringLiteral("Edit Program");
        break;
    case EditOperation::NewProgram:
        layout.caption = QStringLiteral("Edit New Program");
        layout.nameBox = true;
        return layout;
    case EditOperation::SetupSheet:
        layout.caption = QStringLiteral("View Setup Sheet");
        break;
    case EditOperation::NestReport:
        layout.caption = QStringLiteral("View Nest Report");
        break;
    case EditOperation::Renumber:
        layout.caption = QStringLiteral("Renumber Program");
        layout.renumFrame = true;
        [[fallthrough]];
    case EditOperation::StripNumbers:
        if (layout.caption.isEmpty())
            layout.caption = QStringLiteral("Strip Numbers");
        [[fallthrough]];
    case EditOperation::RemoveSpaces:
        if (layout.caption.isEmpty())
            layout.caption = QStringLiteral("Remove Spaces");
        layout.multiList = true;
        layout.directoryFrame = true;
        return layout;
    default:
        // The form as designed: the single list and the directory list.
        layout.singleList = true;
        layout.directoryFrame = true;
        return layout;
    }
    layout.singleList = true;
    layout.directoryFrame = true;
    layout.search = true;
    return layout;
}

void EditFormLogic::Form_Load() {
    QString directory;
    QString name;
    if (RecallLastFile(m_session, directory, name, ProgramKind)) {
        SelectDirectory(m_session, directory);
        m_preselect = name;
    }
}

void EditFormLogic::FillDirectories(ListModel& list) {
    const GlobalSettings& g = m_session.settings;
    FillDirectoryList(m_session, list, g.MachineDir, g.CurrentDir, false, true, Selection::Named);
}

void EditFormLogic::FillFiles(ListModel& list) {
    const GlobalSettings& g = m_session.settings;
    int type = ProgramKind;
    QString pattern;
    if (m_operation == int(EditOperation::SetupSheet)) {
        type = 0;
        pattern = QStringLiteral("*.inf");
    } else if (m_operation == int(EditOperation::NestReport)) {
        type = 0;
        pattern = QStringLiteral("*.rpt");
    }
    FillFileList(m_session, list, g.MachineDir, g.CurrentDir, m_preselect, Selection::Named, type, pattern);
}

void EditFormLogic::DirectoryChosen(const QString& name) {
    SelectDirectory(m_session, name);
    m_preselect.clear();
}

void EditFormLogic::SearchPicked() {
    const SearchResultRecord& found = m_session.settings.SearchResult;
    if (found.flag != -1)
        return;
    SelectDirectory(m_session, found.directory);
    m_preselect = found.name;
}

EditOkOutcome EditFormLogic::EditOk_Click(const EditOkInput& input, const BatchProgressReport& progress) {
    switch (EditOperation(m_operation)) {
    case EditOperation::EditProgram:
    case EditOperation::SetupSheet:
    case EditOperation::NestReport:
        return OpenSelected(input.singleSelection);
    case EditOperation::NewProgram:
        return OpenNew(input.nameText);
    case EditOperation::Renumber:
    case EditOperation::StripNumbers:
    case EditOperation::RemoveSpaces:
        return Rewrite(input, progress);
    }
    return EditOkOutcome::Close;
}

EditOkOutcome EditFormLogic::OpenSelected(const QString& selection) {
    GlobalSettings& g = m_session.settings;
    QString name = TrimBlanks(selection);
    if (name.isEmpty()) {
        QString directory;
        if (!RecallLastFile(m_session, directory, name, ProgramKind)) {
            m_session.messages.Refuse(m_operation == int(EditOperation::EditProgram)
                                          ? QStringLiteral("No Program Selected !")
                                          : QStringLiteral("No Job Selected !"));
            return EditOkOutcome::StayOnList;
        }
        SelectDirectory(m_session, directory);
    }
    const QString extension = m_operation == int(EditOperation::SetupSheet)   ? QStringLiteral(".inf")
                              : m_operation == int(EditOperation::NestReport) ? QStringLiteral(".rpt")
                                                                              : QStringLiteral(".prg");
    OpenInEditor(m_session, m_launcher, g.CurrentPath + name + extension);
    RememberLastFile(m_session, g.CurrentDir, name);
    return EditOkOutcome::Close;
}

EditOkOutcome EditFormLogic::OpenNew(const QString& nameText) {
    GlobalSettings& g = m_session.settings;
    // 1 to 32 characters, and nothing that could leave the current directory.
    const QString name = TrimBlanks(nameText);
    if (!AcceptableOutsideName(name)) {
        m_session.messages.Refuse(QStringLiteral("Invalid File Name !"));
        return EditOkOutcome::StayOnName;
    }
    OpenInEditor(m_session, m_launcher, g.CurrentPath + name + QStringLiteral(".prg"));
    RememberLastFile(m_session, g.CurrentDir, name);
    return EditOkOutcome::Close;
}

EditOkOutcome EditFormLogic::Rewrite(const EditOkInput& input, const BatchProgressReport& progress) {
    GlobalSettings& g = m_session.settings;
    const EditOperation operation = EditOperation(m_operation);
    const QStringList& selected = input.multiSelection;
    const int count = int(selected.size());
    const QString noPrograms = QStringLiteral("No Programs Selected !");

    Int16 start;
    Int16 increment;
    int width = 0;
    QString lead;
    if (operation == EditOperation::Renumber) {
        if (count == 0) {
            m_session.messages.Refuse(noPrograms);
            return EditOkOutcome::StayOnList;
        }
        start = LeadingInt16(input.startText);
        increment = LeadingInt16(input.incrementText);
        if (start < 0 || increment < 1) {
            m_session.messages.Refuse(QStringLiteral("Invalid Specification !"));
            return EditOkOutcome::StayOnStart;
        }
        width = NumberWidth(input.startText);
        lead = QStringLiteral("Renumber ");
    } else {
        lead = operation == EditOperation::StripNumbers ? QStringLiteral("Stip Line Numbers From ")
                                                        : QStringLiteral("Remove Spaces From ");
        if (count < 1) {
            m_session.messages.Refuse(noPrograms);
            return EditOkOutcome::StayOnList;
        }
    }

    const QString question = count == 1 ? lead + Quoted(selected.front()) + QStringLiteral(" ?")
                                        : lead + NumberText(count) + QStringLiteral(" Programs ?");
    const Answer answer = m_session.messages.Ask(question);
    g.LastAnswer = Int16::From(int(answer));
    if (answer != Answer::Yes)
        return EditOkOutcome::Close;

    const BusyCursor busy(m_session.messages);
    for (int i = 0; i < count; ++i) {
        const QString name = TrimBlanks(selected.at(i));
        const QString path = g.CurrentPath + name + QStringLiteral(".prg");
        const RewriteProgress step = [&](qint64 done, qint64 total) {
            if (progress)
                progress({i + 1, count, name, done, total});
        };
        try {
            switch (operation) {
            case EditOperation::Renumber:
                RenumberProgram(m_session, path, start, increment, width, step);
                break;
            case EditOperation::StripNumbers:
                StripNumbers(m_session, path, step);
                break;
            default:
                RemoveSpaces(m_session, path, step);
                break;
            }
        } catch (const RewriteError& error) {
            // The rest of the batch waits until the operator has seen what happened.
            m_session.messages.ShowError(error.text());
            return EditOkOutcome::StayOnList;
        }
    }
    return EditOkOutcome::Close;
}

} // namespace kestrova
