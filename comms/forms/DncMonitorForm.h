#pragma once

#include "Frontend/Session.h"

#include <QDialog>
#include <QTimer>

class QLabel;
class QPlainTextEdit;
class QTableWidget;

namespace kestrova {

// "DNC Monitor": each line the DNC service serves, live, and the last transfers. It only reads
// what the service publishes, so it never disturbs a line; Esc or Enter closes it.
class DncMonitorForm : public QDialog {
    Q_OBJECT
public:
    // How many of the log's last lines are shown, and how often the form looks again.
    static constexpr int Transfers = 20;
    static constexpr int LookMs = 1000;

    DncMonitorForm(Session& session, QWidget* parent = nullptr);

    // Looks at the service now (the form does so by itself every LookMs).
    void Refresh();

private:
    Session& m_session;
    QLabel* m_heading = nullptr;
    QTableWidget* m_lines = nullptr;
    QPlainTextEdit* m_transfers = nullptr;
    QTimer m_look;
};

} // namespace kestrova
