#include "editing/forms/EditForm.h"

#include "editing/forms/HistoryForm.h"
#include "filestore/forms/FormParts.h"
#include "filestore/forms/NameKeyFilter.h"
#include "filestore/forms/SearchForm.h"

#include <QCloseEvent>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace kestrova {

EditForm::EditForm(Session& session, ProgramLauncher& launcher, QWidget* parent)
    : QDialog(parent), m_session(session), m_logic(session, launcher), m_layout(m_logic.Layout()) {
    setObjectName(QStringLiteral("EditForm"));
    setWindowTitle(m_layout.caption);
    BuildControls();
    Arrange();
    try {
        m_logic.Form_Load();
        FillLists();
        m_loaded = true;
    } catch (const SystemError& error) {
        m_session.messages.ShowError(error.text());
    }
}

void EditForm::BuildControls() {
    m_listLabel = new QLabel(m_layout.caption, this);
    m_listLabel->setObjectName(QStringLiteral("ListLabel"));
    m_editList1 = MakeFormList(this, QStringLiteral("EditList1"), QAbstractItemView::SingleSelection);
    m_editList2 = MakeFormList(this, QStringLiteral("EditList2"), QAbstractItemView::ExtendedSelection);

    m_nameLabel = new QLabel(QStringLiteral("Program Name"), this);
    m_nameLabel->setObjectName(QStringLiteral("NameLabel"));
    m_editBox = new QLineEdit(this);
    m_editBox->setObjectName(QStringLiteral("EditBox"));
    m_nameLabel->setBuddy(m_editBox);
    NameKeyFilter::Install(m_session, m_editBox, -32);

    m_directoryFrame = new QFrame(this);
    m_directoryFrame->setObjectName(QStringLiteral("DirectoryFrame"));
    m_directoryFrame->setFrameShape(QFrame::StyledPanel);
    auto* directoryLayout = new QVBoxLayout(m_directoryFrame);
    directoryLayout->addWidget(new QLabel(QStringLiteral("Directory"), m_directoryFrame));
    m_directoryList =
        MakeFormList(m_directoryFrame, QStringLiteral("DirectoryList"), QAbstractItemView::SingleSelection);
    directoryLayout->addWidget(m_directoryList);

    m_renumFrame = new QFrame(this);
    m_renumFrame->setObjectName(QStringLiteral("RenumFrame"));
    m_renumFrame->setFrameShape(QFrame::StyledPanel);
    auto* renumLayout = new QGridLayout(m_renumFrame);
    m_renumBox1 = new QLineEdit(m_renumFrame);
    m_renumBox1->setObjectName(QStringLiteral("RenumBox1"));
    m_renumBox2 = new QLineEdit(m_renumFrame);
    m_renumBox2->setObjectName(QStringLiteral("RenumBox2"));
    const QStringList labels{QStringLiteral("Start No."), QStringLiteral("Increment")};
    int row = 0;
    for (QLineEdit* box : {m_renumBox1, m_renumBox2}) {
        auto* label = new QLabel(labels.at(row), m_renumFrame);
        label->setBuddy(box);
        NameKeyFilter::Install(m_session, box, -1);
        renumLayout->addWidget(label, row, 0);
        renumLayout->addWidget(box, row, 1);
        ++row;
    }

    m_progressLabel = new QLabel(this);
    m_progressLabel->setObjectName(QStringLiteral("ProgressLabel"));
    m_progressBar = new QProgressBar(this);
    m_progressBar->setObjectName(QStringLiteral("ProgressBar"));
    m_progressBar->setRange(0, 1000);
    m_progressLabel->hide();
    m_progressBar->hide();

    m_search = MakeFormButton(this, QStringLiteral("Search"), QStringLiteral("&Search"));
    m_history = MakeFormButton(this, QStringLiteral("EditHistory"), QStringLiteral("&History"));
    m_editOk = MakeFormButton(this, QStringLiteral("EditOk"), QStringLiteral("OK"));
    m_editOk->setDefault(true);
    m_editCncl = MakeFormButton(this, QStringLiteral("EditCncl"), QStringLiteral("Cancel"));

    auto* left = new QVBoxLayout;
    left->addWidget(m_listLabel);
    left->addWidget(m_editList1);
    left->addWidget(m_editList2);
    left->addWidget(m_nameLabel);
    left->addWidget(m_editBox);
    auto* right = new QVBoxLayout;
    right->addWidget(m_directoryFrame);
    right->addWidget(m_renumFrame);
    auto* top = new QHBoxLayout;
    top->addLayout(left, 1);
    top->addLayout(right, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_search);
    buttons->addWidget(m_history);
    buttons->addStretch();
    buttons->addWidget(m_editOk);
    buttons->addWidget(m_editCncl);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(m_progressLabel);
    layout->addWidget(m_progressBar);
    layout->addLayout(buttons);

    connect(m_directoryList, &QListWidget::currentRowChanged, this, &EditForm::DirectoryList_Change);
    connect(m_editList1, &QListWidget::itemDoubleClicked, this, &EditForm::EditOk_Click);
    connect(m_editList2, &QListWidget::itemDoubleClicked, this, &EditForm::EditOk_Click);
    connect(m_search, &QPushButton::clicked, this, &EditForm::Search_Click);
    connect(m_history, &QPushButton::clicked, this, &EditForm::History_Click);
    connect(m_editOk, &QPushButton::clicked, this, &EditForm::EditOk_Click);
    connect(m_editCncl, &QPushButton::clicked, this, &QDialog::reject);
}

void EditForm::Arrange() {
    m_listLabel->setVisible(m_layout.singleList || m_layout.multiList);
    m_editList1->setVisible(m_layout.singleList);
    m_editList2->setVisible(m_layout.multiList);
    m_nameLabel->setVisible(m_layout.nameBox);
    m_editBox->setVisible(m_layout.nameBox);
    m_directoryFrame->setVisible(m_layout.directoryFrame);
    m_renumFrame->setVisible(m_layout.renumFrame);
    m_search->setVisible(m_layout.search);
    m_history->setVisible(m_layout.singleList || m_layout.multiList);
    if (m_layout.nameBox)
        m_nameLabel->setText(QStringLiteral("Program Name"));
    QWidget* first = m_layout.nameBox ? static_cast<QWidget*>(m_editBox) : FileList();
    first->setFocus();
}

QListWidget* EditForm::FileList() const {
    return m_layout.multiList ? m_editList2 : m_editList1;
}

void EditForm::FillLists() {
    if (m_layout.directoryFrame) {
        ListModel directories;
        m_logic.FillDirectories(directories);
        FillListWidget(m_directoryList, directories);
    }
    FillFiles();
}

void EditForm::FillFiles() {
    if (!m_layout.singleList && !m_layout.multiList)
        return;
    ListModel files;
    m_logic.FillFiles(files);
    FillListWidget(FileList(), files);
}

void EditForm::DirectoryList_Change() {
    QListWidgetItem* item = m_directoryList->currentItem();
    if (!item || m_busy)
        return;
    try {
        m_logic.DirectoryChosen(item->text());
        FillFiles();
    } catch (const SystemError& error) {
        m_session.messages.ShowError(error.text());
    }
}

void EditForm::Search_Click() {
    try {
        if (!PickFileBySearch(m_session, this, 2))
            return;
        m_logic.SearchPicked();
        FillLists();
        FileList()->setFocus();
    } catch (const SystemError& error) {
        m_session.messages.ShowError(error.text());
    }
}

// The history of the program selected in the list (the first of several).
void EditForm::History_Click() {
    QString name;
    for (int i = 0; i < FileList()->count() && name.isEmpty(); ++i)
        if (FileList()->item(i)->isSelected())
            name = FileList()->item(i)->text();
    HistoryForm form(m_session, name.isEmpty() ? name : name + QStringLiteral(".prg"), this);
    form.exec();
    FileList()->setFocus();
}

void EditForm::EditOk_Click() {
    if (m_busy)
        return;
    EditOkInput input;
    if (QListWidgetItem* item = m_editList1->currentItem(); item && item->isSelected())
        input.singleSelection = item->text();
    for (int i = 0; i < m_editList2->count(); ++i)
        if (m_editList2->item(i)->isSelected())
            input.multiSelection << m_editList2->item(i)->text();
    input.nameText = m_editBox->text();
    input.startText = m_renumBox1->text();
    input.incrementText = m_renumBox2->text();

    EditOkOutcome outcome = EditOkOutcome::StayOnList;
    m_busy = true;
    for (QWidget* w : findChildren<QWidget*>())
        if (w != m_progressBar && w != m_progressLabel)
            w->setEnabled(false);
    try {
        outcome = m_logic.EditOk_Click(input, [this](const BatchProgress& p) { ShowProgress(p); });
    } catch (const SystemError& error) {
        m_session.messages.ShowError(error.text());
    } catch (const std::exception& error) {
        m_session.messages.ShowError(QString::fromLocal8Bit(error.what()));
    }
    for (QWidget* w : findChildren<QWidget*>())
        w->setEnabled(true);
    m_progressLabel->hide();
    m_progressBar->hide();
    m_busy = false;

    switch (outcome) {
    case EditOkOutcome::Close:
        accept();
        return;
    case EditOkOutcome::StayOnList:
        FileList()->setFocus();
        return;
    case EditOkOutcome::StayOnStart:
        m_renumBox1->setFocus();
        m_renumBox1->selectAll();
        return;
    case EditOkOutcome::StayOnName:
        m_editBox->setFocus();
        m_editBox->selectAll();
        return;
    }
}

void EditForm::ShowProgress(const BatchProgress& p) {
    m_progressLabel->setText(QStringLiteral("%1 (%2 of %3)").arg(p.name).arg(p.program).arg(p.count));
    m_progressBar->setValue(p.total > 0 ? int(p.done * 1000 / p.total) : 1000);
    m_progressLabel->show();
    m_progressBar->show();
    // The windows repaint and timers and serial events go on while the batch runs.
    LetPendingEventsRun();
}

void EditForm::reject() {
    if (!m_busy)
        QDialog::reject();
}

void EditForm::closeEvent(QCloseEvent* event) {
    if (m_busy) {
        event->ignore();
        return;
    }
    QDialog::closeEvent(event);
}

} // namespace kestrova
