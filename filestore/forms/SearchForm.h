#pragma once

#include "Frontend/Session.h"

#include <QDialog>

class QCheckBox;
class QFrame;
class QLabel;
class QLineEdit;
class QPushButton;
class QTreeWidget;

namespace kestrova {

// The file name search, a picker: the criteria page takes a text and the kinds of file, the
// result page lists every drawing and/or program of the machine whose name holds the text, with
// its directory, as one two-column list. OK (or a double-click) hands the chosen row back in
// `SearchResult` (flag -1, the machine directory, the name, the directory); Cancel and Esc leave
// the flag 0. The opener sets `SearchMode` first: 1 drawings, 2 programs, 22 programs of the
// machine chosen for communications, 3 both, with the check boxes for the operator to change.
class SearchForm : public QDialog {
    Q_OBJECT
public:
    SearchForm(Session& session, QWidget* parent = nullptr);

private:
    void BuildControls();
    void Form_Load();
    void CriteriaOk_Click();
    void SearchOk_Click();
    void ShowPage(bool results);

    Session& m_session;
    QString m_machineDir;

    QFrame* m_criteriaFrame = nullptr;
    QLineEdit* m_criteriaBox = nullptr;
    QFrame* m_checkFrame = nullptr;
    QCheckBox* m_drawingsCheck = nullptr;
    QCheckBox* m_programsCheck = nullptr;
    QLabel* m_criteriaLabel = nullptr;
    QPushButton* m_criteriaOk = nullptr;
    QPushButton* m_criteriaCncl = nullptr;

    QFrame* m_searchFrame = nullptr;
    QTreeWidget* m_searchList = nullptr;
    QLabel* m_searchLabel = nullptr;
    QLabel* m_kindLabel = nullptr;
    QPushButton* m_searchOk = nullptr;
    QPushButton* m_searchCncl = nullptr;
};

// Opens the search in the given mode over parent and waits for it. True when the operator
// picked a file: `SearchResult` then holds it.
[[nodiscard]] bool PickFileBySearch(Session& session, QWidget* parent, Int16 mode);

} // namespace kestrova
