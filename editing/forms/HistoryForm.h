#pragma once

#include "Frontend/Session.h"
#include "filestore/ProgramHistory.h"

#include <QDialog>
#include <QPointer>

class QLabel;
class QListWidget;
class QPushButton;

namespace kestrova {

class CompareForm;

// "Program History": the programs and drawings of the current data directory on the left, the
// versions the history keeps of the selected one on the right, newest first, with time,
// operation and size. Compare shows one selected version against the current program, or two
// selected versions against each other; Restore puts the selected version back as the current
// program, whose text the history keeps first. Esc closes.
class HistoryForm : public QDialog {
    Q_OBJECT
public:
    // program: the file to show first (a name of the current directory, "X.prg"); empty for the first.
    HistoryForm(Session& session, const QString& program, QWidget* parent = nullptr);

    // The compare form last opened, while it is open.
    [[nodiscard]] CompareForm* Compare() const;
    // The line of the version list for a version.
    [[nodiscard]] static QString VersionLine(const HistoryVersion& version);

private:
    void FillPrograms(const QString& selected);
    void ShowVersions();
    void Compare_Click();
    void Restore_Click();
    [[nodiscard]] QString Program() const;
    [[nodiscard]] QList<HistoryVersion> SelectedVersions() const;

    Session& m_session;
    ProgramHistory m_history;
    QList<HistoryVersion> m_versions;
    QListWidget* m_programs = nullptr;
    QListWidget* m_versionList = nullptr;
    QPushButton* m_compareButton = nullptr;
    QPushButton* m_restoreButton = nullptr;
    // Deleted when closed, or with this form: never followed once gone.
    QPointer<CompareForm> m_compare;
};

} // namespace kestrova
