#include "comms/forms/SendForm.h"

#include "editing/MachineFrame.h"
#include "editing/forms/ProgramViewDialog.h"
#include "filestore/Names.h"
#include "filestore/forms/SearchForm.h"

#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace kestrova {

SendForm::SendForm(Session& session, const SerialLineFactory& lines, QWidget* parent, SendKind kind)
    : TransferDialog(session, lines, parent),
      m_engine(std::make_unique<SendEngine>(*m_line, PauseTimer::Shared())),
      m_logic(session, *m_engine, kind) {
    setObjectName(QStringLiteral("SendForm"));
    setWindowTitle(kind == SendKind::Executive ? QStringLiteral("Communications - Send Executive")
                                               : QStringLiteral("Communications - Send Program"));
    BuildControls();
    connect(m_engine.get(), &SendEngine::ProgressChanged, this, &SendForm::ShowProgress);
    Load([this] { m_logic.Form_Load(); });
    if (!Loaded())
        return;
    {
        const QSignalBlocker quiet(m_machineCombo);
        m_machineCombo->addItems(m_logic.Machines());
        m_machineCombo->setCurrentIndex(m_logic.MachineIndex());
    }
    m_machineLabel->setVisible(m_logic.MachineChoice());
    m_machineCombo->setVisible(m_logic.MachineChoice());
    FillLists();
    ShowProgress();
}

SendForm::~SendForm() = default;

void SendForm::BuildControls() {
    m_choices = new QWidget(this);
    auto* grid = new QGridLayout(m_choices);
    grid->setContentsMargins(0, 0, 0, 0);
    m_machineLabel = new QLabel(QStringLiteral("Machine"), m_choices);
    m_machineCombo = new QComboBox(m_choices);
    m_machineCombo->setObjectName(QStringLiteral("MachineCombo"));
    m_directoryList = new QListWidget(m_choices);
    m_directoryList->setObjectName(QStringLiteral("DirectoryList"));
    m_fileList = new QListWidget(m_choices);
    m_fileList->setObjectName(QStringLiteral("FileList"));
    m_fileList->setSelectionMode(QAbstractItemView::ExtendedSelection);
    grid->addWidget(m_machineLabel, 0, 0);
    grid->addWidget(m_machineCombo, 0, 1);
    grid->addWidget(new QLabel(QStringLiteral("Directory"), m_choices), 1, 0);
    grid->addWidget(new QLabel(QStringLiteral("Programs"), m_choices), 1, 1);
    grid->addWidget(m_directoryList, 2, 0);
    grid->addWidget(m_fileList, 2, 1);

    m_sendLabel = new QLabel(this);
    m_sendLabel->setObjectName(QStringLiteral("SendLabel"));
    m_sendLabel->setAlignment(Qt::AlignCenter);
    m_sendRate = new QLabel(this);
    m_sendRate->setObjectName(QStringLiteral("SendRate"));
    m_sendRate->setAlignment(Qt::AlignCenter);
    m_progress = new QProgressBar(this);
    m_progress->setObjectName(QStringLiteral("SendProgress"));
    m_progress->setRange(0, 100);

    m_sendOk = Button(this, QStringLiteral("SendOk"), QStringLiteral("&Send"));
    m_sendCncl = Button(this, QStringLiteral("SendCncl"), QStringLiteral("Cancel"));
    m_sendFrc = Button(this, QStringLiteral("SendFrc"), QStringLiteral("&Force Start"));
    m_sendAbrt = Button(this, QStringLiteral("SendAbrt"), QStringLiteral("&Abort"));
    // With the lists, so that they rest while a transfer runs.
    m_sendView = Button(m_choices, QStringLiteral("SendView"), QStringLiteral("&View"));
    m_sendSrch = Button(m_choices, QStringLiteral("SendSrch"), QStringLiteral("Sea&rch"));
    auto* listButtons = new QHBoxLayout;
    listButtons->addStretch();
    listButtons->addWidget(m_sendView);
    listButtons->addWidget(m_sendSrch);
    grid->addLayout(listButtons, 3, 1);
    auto* buttons = new QHBoxLayout;
    for (QPushButton* b : {m_sendOk, m_sendCncl, m_sendFrc, m_sendAbrt})
        buttons->addWidget(b);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_choices);
    layout->addWidget(m_sendLabel);
    layout->addWidget(m_progress);
    layout->addWidget(m_sendRate);
    layout->addLayout(buttons);

    connect(m_machineCombo, &QComboBox::activated, this, &SendForm::MachineCombo_Click);
    // The directory is the list's current one, however it was chosen: click, arrows, typing.
    connect(m_directoryList, &QListWidget::currentRowChanged, this, &SendForm::DirectoryList_Click);
    connect(m_sendOk, &QPushButton::clicked, this, &SendForm::SendOk_Click);
    connect(m_sendCncl, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_sendSrch, &QPushButton::clicked, this, &SendForm::SendSrch_Click);
    connect(m_sendView, &QPushButton::clicked, this, &SendForm::SendView_Click);
    connect(m_sendFrc, &QPushButton::clicked, this, [this] { m_engine->SendFrc_Click(); });
    connect(m_sendAbrt, &QPushButton::clicked, this, [this] { m_engine->SendAbrt_Click(); });
}

void SendForm::FillLists() {
    ListModel directories;
    m_logic.FillDirectories(directories);
    Fill(m_directoryList, directories);
    ShowPrograms();
}

void SendForm::ShowPrograms() {
    ListModel programs;
    m_logic.FillPrograms(programs);
    Fill(m_fileList, programs);
}

void SendForm::MachineCombo_Click(int index) {
    if (!Guarded([&] { m_logic.MachineChosen(index); })) {
        const QSignalBlocker quiet(m_machineCombo);
        m_machineCombo->setCurrentIndex(m_logic.MachineIndex());
    }
    FillLists();
}

void SendForm::DirectoryList_Click() {
    if (QListWidgetItem* item = m_directoryList->currentItem())
        m_logic.DirectoryChosen(item->text());
    ShowPrograms();
}

void SendForm::SendOk_Click() {
    QStringList names;
    for (int row = 0; row < m_fileList->count(); ++row)
        if (m_fileList->item(row)->isSelected())
            names << m_fileList->item(row)->text();
    m_choices->setEnabled(false);
    m_sendOk->setVisible(false);
    m_sendCncl->setVisible(false);
    Transfer([&] { m_logic.SendOk_Click(names); });
    m_choices->setEnabled(true);
    m_sendOk->setVisible(true);
    m_sendCncl->setVisible(true);
    ShowProgress();
    m_fileList->setFocus();
}

// The file name search over the programs of the machine sent to: the program found is chosen
// in its directory.
void SendForm::SendSrch_Click() {
    if (!PickFileBySearch(m_session, this, 22))
        return;
    const SearchResultRecord& found = m_session.settings.SearchResult;
    m_logic.DirectoryChosen(found.directory);
    FillLists();
    m_fileList->clearSelection();
    const QList<QListWidgetItem*> items = m_fileList->findItems(found.name, Qt::MatchFixedString);
    if (!items.isEmpty()) {
        m_fileList->setCurrentItem(items.first());
        items.first()->setSelected(true);
    }
    m_fileList->setFocus();
}

// The drawing of the program current in the list, in the sending machine's frame; the form
// waits while it is open.
void SendForm::SendView_Click() {
    QListWidgetItem* item = m_fileList->currentItem();
    if (!item) {
        m_session.messages.Beep();
        return;
    }
    const GlobalSettings& g = m_session.settings;
    ProgramViewDialog dialog(ReadMachineFrame(m_session, g.CommsMachineDir), this);
    const QString path =
        PathJoin(g, g.CommsMachineDir, g.CommsDirectory) + item->text() + QStringLiteral(".prg");
    if (!Guarded([&] { dialog.Load(m_session.files, path); }))
        return;
    dialog.exec();
    m_fileList->setFocus();
}

void SendForm::ShowProgress() {
    const SendProgress& p = m_engine->Progress();
    m_sendLabel->setText(p.Label);
    m_sendLabel->setVisible(p.LabelVisible);
    m_progress->setValue(p.Percent);
    m_progress->setVisible(p.BarVisible);
    m_sendRate->setText(p.Rate);
    m_sendRate->setVisible(!p.Rate.isEmpty());
    const bool forceWasVisible = !m_sendFrc->isHidden();
    m_sendFrc->setVisible(p.ForceVisible);
    m_sendAbrt->setVisible(p.AbortVisible);
    // The force button answers Enter while it shows; the abort button answers Esc (reject).
    m_sendFrc->setDefault(p.ForceVisible);
    m_sendOk->setDefault(!p.ForceVisible && !Busy());
    if (p.ForceVisible && !forceWasVisible)
        m_sendFrc->setFocus();
}

void SendForm::Abort() {
    m_engine->SendAbrt_Click();
}

} // namespace kestrova
