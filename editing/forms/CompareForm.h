#pragma once

#include "editing/ProgramDiff.h"

#include <QDialog>
#include <vector>

class QLabel;
class QPlainTextEdit;

namespace kestrova {

// Two versions of a program side by side, the older on the left: each row one line of each,
// marked "~" changed, "+" added, "-" removed, with the count of each above. F8 and Shift+F8 (or
// the buttons) move both sides to the next and the previous change; Esc closes. Read only.
class CompareForm : public QDialog {
    Q_OBJECT
public:
    CompareForm(const ProgramDiff& diff, const QString& olderTitle, const QString& newerTitle,
                QWidget* parent = nullptr);

    // The row both sides show the cursor on, from 0.
    [[nodiscard]] int CurrentRow() const;
    // The counts line: "2 Changed, 1 Added, 0 Removed".
    [[nodiscard]] QString Counts() const;
    // The text of one side, a row a line, marks included.
    [[nodiscard]] QString SideText(bool newer) const;

    void NextChange();
    void PreviousChange();

private:
    void GoToRow(int row);
    QPlainTextEdit* m_older = nullptr;
    QPlainTextEdit* m_newer = nullptr;
    QLabel* m_counts = nullptr;
    std::vector<int> m_changes;
};

} // namespace kestrova
