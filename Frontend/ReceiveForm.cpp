#include "Frontend/ReceiveForm.h"

#include "Frontend/NameKeyFilter.h"
#include "platform/Errors.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScopeGuard>
#include <QVBoxLayout>

namespace kestrova {

namespace {

QPushButton* Button(QWidget* parent, const QString& name, const QString& caption) {
    auto* button = new QPushButton(caption, parent);
    button->setObjectName(name);
    button->setAutoDefault(false);
    return button;
}

} // namespace

ReceiveForm::ReceiveForm(Session& session, const SerialLineFactory& lines, QWidget* parent)
    : QDialog(parent), m_session(session), m_line(lines()),
      m_receive(std::make_unique<GeneralReceive>(*m_line)), m_logic(session, *m_receive) {
    setObjectName(QStringLiteral("ReceiveForm"));
    setWindowTitle(m_logic.Caption());
    BuildControls();
    connect(m_receive.get(), &GeneralReceive::DisplayChanged, this, &ReceiveForm::ShowDisplay);
    try {
        m_logic.Form_Load();
        m_loaded = true;
    } catch (const SystemError& e) {
        m_session.messages.ShowError(e.text());
        return;
    }
    FillLists();
    ShowDisplay();
}

ReceiveForm::~ReceiveForm() = default;

void ReceiveForm::BuildControls() {
    m_nameLabel = new QLabel(m_logic.NameLabel(), this);
    m_nameLabel->setObjectName(QStringLiteral("NameLabel"));
    m_receiveCombo = new QComboBox(this);
    m_receiveCombo->setObjectName(QStringLiteral("ReceiveCombo"));
    m_receiveCombo->setEditable(true);
    m_receiveCombo->setInsertPolicy(QComboBox::NoInsert);
    m_receiveCombo->lineEdit()->setMaxLength(32);
    NameKeyFilter::Install(m_session, m_receiveCombo->lineEdit(), -32);

    m_directoryFrame = new QFrame(this);
    m_directoryFrame->setObjectName(QStringLiteral("DirectoryFrame"));
    auto* frameLayout = new QVBoxLayout(m_directoryFrame);
    frameLayout->addWidget(new QLabel(QStringLiteral("Directory"), m_directoryFrame));
    m_directoryList = new QListWidget(m_directoryFrame);
    m_directoryList->setObjectName(QStringLiteral("DirectoryList"));
    frameLayout->addWidget(m_directoryList);

    m_receiveLabel = new QLabel(this);
    m_receiveLabel->setObjectName(QStringLiteral("ReceiveLabel"));
    m_receiveLabel->setAlignment(Qt::AlignCenter);
    m_receiveChars = new QLineEdit(this);
    m_receiveChars->setObjectName(QStringLiteral("ReceiveChars"));
    m_receiveChars->setReadOnly(true);
    m_receiveChars->setAlignment(Qt::AlignCenter);

    m_receiveOk = Button(this, QStringLiteral("ReceiveOk"), QStringLiteral("OK"));
    m_receiveOk->setDefault(true);
    m_receiveCncl = Button(this, QStringLiteral("ReceiveCncl"), QStringLiteral("Cancel"));
    m_receiveAbrt = Button(this, QStringLiteral("ReceiveAbrt"), QStringLiteral("&Abort"));
    auto* buttons = new QHBoxLayout;
    for (QPushButton* b : {m_receiveOk, m_receiveCncl, m_receiveAbrt})
        buttons->addWidget(b);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_nameLabel);
    layout->addWidget(m_receiveCombo);
    layout->addWidget(m_directoryFrame);
    layout->addWidget(m_receiveLabel);
    layout->addWidget(m_receiveChars);
    layout->addLayout(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize); // shrinks to the progress layout

    connect(m_directoryList, &QListWidget::itemClicked, this, &ReceiveForm::DirectoryList_Click);
    connect(m_receiveOk, &QPushButton::clicked, this, &ReceiveForm::ReceiveOk_Click);
    connect(m_receiveCncl, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_receiveAbrt, &QPushButton::clicked, this, [this] { m_receive->ReceiveAbrt_Click(); });
}

void ReceiveForm::FillLists() {
    ListModel directories;
    m_logic.FillDirectories(directories);
    m_directoryList->clear();
    m_directoryList->addItems(directories.entries);
    m_directoryList->setCurrentRow(directories.selected);
}

void ReceiveForm::DirectoryList_Click() {
    if (QListWidgetItem* item = m_directoryList->currentItem())
        m_logic.DirectoryChosen(item->text());
}

void ReceiveForm::ReceiveOk_Click() {
    m_receiving = true;
    ReceiveOkOutcome outcome = ReceiveOkOutcome::StayOnName;
    {
        const auto done = qScopeGuard([this] { m_receiving = false; });
        try {
            outcome = m_logic.ReceiveOk_Click(m_receiveCombo->currentText());
        } catch (const SystemError& e) {
            // A port that cannot open, a file that cannot be written: told once, naming it.
            m_session.messages.ShowError(e.text());
        }
    }
    if (outcome == ReceiveOkOutcome::Close) {
        accept();
        return;
    }
    ShowDisplay();
    m_receiveCombo->setFocus();
    m_receiveCombo->lineEdit()->selectAll();
}

void ReceiveForm::ShowDisplay() {
    const ReceiveDisplay& d = m_receive->Display();
    m_nameLabel->setVisible(d.EntryVisible);
    m_receiveCombo->setVisible(d.EntryVisible);
    m_directoryFrame->setVisible(d.EntryVisible);
    m_receiveOk->setVisible(d.EntryVisible);
    m_receiveCncl->setVisible(d.EntryVisible);
    m_receiveLabel->setText(d.Label);
    m_receiveLabel->setVisible(d.LabelVisible);
    m_receiveChars->setText(d.Chars);
    m_receiveChars->setVisible(d.CharsVisible);
    const bool abortWasHidden = m_receiveAbrt->isHidden();
    m_receiveAbrt->setVisible(d.AbortVisible);
    m_receiveOk->setDefault(d.EntryVisible);
    if (d.AbortVisible && abortWasHidden)
        m_receiveAbrt->setFocus();
}

void ReceiveForm::reject() {
    // While receiving, Esc is the abort button.
    if (m_receiving) {
        m_receive->ReceiveAbrt_Click();
        return;
    }
    QDialog::reject();
}

void ReceiveForm::closeEvent(QCloseEvent* event) {
    if (m_receiving) {
        m_receive->ReceiveAbrt_Click();
        event->ignore();
        return;
    }
    QDialog::closeEvent(event);
}

} // namespace kestrova
