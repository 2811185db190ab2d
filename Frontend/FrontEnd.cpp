#include "Frontend/FrontEnd.h"

#include "Frontend/StartUp.h"

#include <QLabel>
#include <QStatusBar>

namespace kestrova {

FrontEnd::FrontEnd(Session& session, QWidget* parent)
    : QMainWindow(parent), m_session(session), m_directoryLabel(new QLabel(this)), m_machineLabel(new QLabel(this)) {
    setObjectName(QStringLiteral("FrontEnd"));
    setWindowTitle(FrontEndCaption);
    resize(720, 480);
    statusBar()->setObjectName(QStringLiteral("StatusBar"));
    statusBar()->addWidget(m_directoryLabel, 1);
    statusBar()->addPermanentWidget(m_machineLabel);
    ShowStatus();
}

void FrontEnd::ShowStatus() {
    m_directoryLabel->setText(QStringLiteral(" ") + m_session.settings.CurrentDir);
    m_machineLabel->setText(m_session.settings.MachineDescription + QStringLiteral(" "));
}

} // namespace kestrova
