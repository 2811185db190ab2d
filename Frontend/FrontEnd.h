#pragma once

#include "Frontend/Session.h"

#include <QMainWindow>

class QLabel;

namespace kestrova {

// The main window. For now it shows the caption and the status: the current data directory at
// the left and the machine's description at the right.
class FrontEnd : public QMainWindow {
    Q_OBJECT
public:
    explicit FrontEnd(Session& session, QWidget* parent = nullptr);

    void ShowStatus();

private:
    Session& m_session;
    QLabel* m_directoryLabel;
    QLabel* m_machineLabel;
};

} // namespace kestrova
