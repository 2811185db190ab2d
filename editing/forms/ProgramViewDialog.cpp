#include "editing/forms/ProgramViewDialog.h"

#include "editing/forms/ProgramView.h"

#include <QDialogButtonBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace kestrova {

ProgramViewDialog::ProgramViewDialog(const MachineFrame& machine, QWidget* parent)
    : QDialog(parent), m_view(new ProgramView(this)) {
    setObjectName(QStringLiteral("ProgramViewDialog"));
    m_view->SetMachine(machine);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->button(QDialogButtonBox::Close)->setText(QStringLiteral("&Close"));
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_view, 1);
    layout->addWidget(buttons);
    resize(820, 560);
    m_view->setFocus();
}

void ProgramViewDialog::Load(const FileSystem& files, const QString& path) {
    setWindowTitle(QStringLiteral("View - %1").arg(path));
    m_view->Load(files, path);
}

} // namespace kestrova
