#pragma once

#include "Frontend/Session.h"

#include <QDialog>

class QPlainTextEdit;

namespace kestrova {

// "Transfer Log": the last lines of "Transfer.log", newest last, for reading only; Esc or Enter
// closes it.
class TransferLogForm : public QDialog {
    Q_OBJECT
public:
    // How many of the last lines are shown.
    static constexpr int Shown = 200;

    TransferLogForm(Session& session, QWidget* parent = nullptr);

    [[nodiscard]] QString Text() const;

private:
    QPlainTextEdit* m_text = nullptr;
};

} // namespace kestrova
