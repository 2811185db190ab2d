#include "comms/forms/ReceiveForm.h"

#include "filestore/forms/NameKeyFilter.h"

#include <QComboBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace kestrova {

ReceiveForm::ReceiveForm(Session& session, const SerialLineFactory& lines, QWidget* parent)
    : TransferDialog(session, lines, parent), m_receive(std::make_unique<GeneralReceive>(*m_line)),
      m_logic(session, *m_receive) {
    setObjectName(QStringLiteral("ReceiveForm"));
    setWindowTitle(m_logic.Caption());
    BuildControls();
    connect(m_receive.get(), &GeneralReceive::DisplayChanged, this, &ReceiveForm::ShowDisplay);
    Load([this] { m_logic.Form_Load(); });
    if (!Loaded())
        return;
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
    NameKeyFilter::Install(m_session, m_receiveCombo, -32);

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

    m_receiveRate = new QLabel(this);
    m_receiveRate->setObjectName(QStringLiteral("ReceiveRate"));
    m_receiveRate->setAlignment(Qt::AlignCenter);

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
    layout->addWidget(m_receiveRate);
    layout->addLayout(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize); // shrinks to the progress layout

    // The directory is the list's current one, however it was chosen: click, arrows, typing.
    connect(m_directoryList, &QListWidget::currentRowChanged, this, &ReceiveForm::DirectoryList_Click);
    connect(m_receiveOk, &QPushButton::clicked, this, &ReceiveForm::ReceiveOk_Click);
    connect(m_receiveCncl, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_receiveAbrt, &QPushButton::clicked, this, [this] { m_receive->ReceiveAbrt_Click(); });
}

void ReceiveForm::FillLists() {
    ListModel directories;
    m_logic.FillDirectories(directories);
    Fill(m_directoryList, directories);
}

void ReceiveForm::DirectoryList_Click() {
    if (QListWidgetItem* item = m_directoryList->currentItem())
        m_logic.DirectoryChosen(item->text());
}

void ReceiveForm::ReceiveOk_Click() {
    ReceiveOkOutcome outcome = ReceiveOkOutcome::StayOnName;
    Transfer([&] { outcome = m_logic.ReceiveOk_Click(m_receiveCombo->currentText()); });
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
    m_receiveRate->setText(d.Rate);
    m_receiveRate->setVisible(!d.Rate.isEmpty());
    const bool abortWasHidden = m_receiveAbrt->isHidden();
    m_receiveAbrt->setVisible(d.AbortVisible);
    m_receiveOk->setDefault(d.EntryVisible);
    if (d.AbortVisible && abortWasHidden)
        m_receiveAbrt->setFocus();
}

void ReceiveForm::Abort() {
    m_receive->ReceiveAbrt_Click();
}

} // namespace kestrova
