#include "exchange/forms/RainerForm.h"

#include "exchange/RainerFloppy.h"
#include "filestore/Listings.h"
#include "filestore/SelectDirectory.h"
#include "filestore/forms/SearchForm.h"

#include <QComboBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace kestrova {

RainerForm::RainerForm(Session& session, QWidget* parent)
    : ExchangeDialog(session, parent), m_operation(session.settings.RainerOperation),
      m_setup(RainerFormSetupFor(m_operation)) {
    setObjectName(QStringLiteral("RainerForm"));
    setWindowTitle(m_setup.caption);

    auto* rainFrame = new QFrame(this);
    rainFrame->setObjectName(QStringLiteral("RainFrame"));
    auto* programFrame = new QFrame(rainFrame);
    programFrame->setObjectName(QStringLiteral("ProgramFrame"));
    m_programList = new QListWidget(programFrame);
    m_programList->setObjectName(QStringLiteral("ProgramList"));
    m_programList->setSelectionMode(QAbstractItemView::ExtendedSelection);
    auto* listLabel = new QLabel(m_setup.listLabel, programFrame);
    listLabel->setObjectName(QStringLiteral("ListLabel"));
    listLabel->setBuddy(m_programList);
    auto* programLayout = new QVBoxLayout(programFrame);
    programLayout->addWidget(listLabel);
    programLayout->addWidget(m_programList);

    m_directoryFrame = new QFrame(rainFrame);
    m_directoryFrame->setObjectName(QStringLiteral("DirectoryFrame"));
    m_directoryList = new QComboBox(m_directoryFrame);
    m_directoryList->setObjectName(QStringLiteral("DirectoryList"));
    auto* directoryLabel = new QLabel(m_setup.directoryLabel, m_directoryFrame);
    directoryLabel->setObjectName(QStringLiteral("DirectoryLabel"));
    directoryLabel->setBuddy(m_directoryList);
    auto* directoryLayout = new QVBoxLayout(m_directoryFrame);
    directoryLayout->addWidget(directoryLabel);
    directoryLayout->addWidget(m_directoryList);
    directoryLayout->addStretch(1);
    m_directoryFrame->setVisible(m_setup.directoryShown);

    auto* buttonFrame = new QFrame(this);
    buttonFrame->setObjectName(QStringLiteral("ButtonFrame"));
    m_rainOk = Button(buttonFrame, QStringLiteral("RainOk"), QStringLiteral("OK"));
    m_rainOk->setDefault(true);
    QPushButton* cancel = Button(buttonFrame, QStringLiteral("RainCncl"), QStringLiteral("Cancel"));
    m_search = Button(buttonFrame, QStringLiteral("Search"), QStringLiteral("&Search"));
    m_search->setVisible(m_setup.searchShown);
    auto* buttonLayout = new QHBoxLayout(buttonFrame);
    buttonLayout->addWidget(m_search);
    buttonLayout->addStretch(1);
    buttonLayout->addWidget(m_rainOk);
    buttonLayout->addWidget(cancel);

    auto* rainLayout = new QHBoxLayout(rainFrame);
    rainLayout->addWidget(programFrame, 1);
    rainLayout->addWidget(m_directoryFrame);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(rainFrame, 1);
    layout->addWidget(buttonFrame);
    TabOrder({m_programList, m_directoryList, m_search, m_rainOk, cancel});

    connect(m_rainOk, &QPushButton::clicked, this, &RainerForm::RainOk_Click);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_programList, &QListWidget::itemDoubleClicked, this, &RainerForm::RainOk_Click);
    connect(m_search, &QPushButton::clicked, this, &RainerForm::Search_Click);

    FillDirectoryCombo();
    connect(m_directoryList, &QComboBox::currentIndexChanged, this, &RainerForm::DirectoryList_Change);
    FillProgramList();
    m_programList->setFocus();
}

void RainerForm::FillDirectoryCombo() {
    Guarded([this] {
        const GlobalSettings& g = m_session.settings;
        ListModel directories;
        FillDirectoryList(m_session, directories, g.MachineDir, g.CurrentDir, false, true, Selection::Named);
        const QSignalBlocker quiet(m_directoryList);
        m_directoryList->clear();
        m_directoryList->addItems(directories.entries);
        m_directoryList->setCurrentIndex(directories.selected);
    });
}

void RainerForm::FillProgramList(const QString& nameToSelect) {
    Guarded([this, &nameToSelect] {
        ListModel programs;
        const GlobalSettings& g = m_session.settings;
        if (m_setup.listsIndex)
            FillRainerList(m_session, programs);
        else
            FillFileList(m_session, programs, g.MachineDir, g.CurrentDir, nameToSelect,
                         nameToSelect.isEmpty() ? Selection::First : Selection::Named, 2, {});
        Fill(m_programList, programs);
    });
}

void RainerForm::Search_Click() {
    // A program found anywhere in the machine's directories: its directory becomes the one
    // exported from, and the program is the one selected there.
    Guarded([this] {
        if (!PickFileBySearch(m_session, this, 2))
            return;
        const SearchResultRecord found = m_session.settings.SearchResult;
        if (found.directory.compare(m_session.settings.CurrentDir, Qt::CaseInsensitive) != 0)
            SelectDirectory(m_session, found.directory);
        FillDirectoryCombo();
        FillProgramList(found.name);
    });
    m_programList->setFocus();
}

void RainerForm::DirectoryList_Change() {
    // The chosen directory becomes the current one: programs are exported from it and imported
    // into it.
    Guarded([this] { SelectDirectory(m_session, m_directoryList->currentText()); });
    if (!m_setup.listsIndex)
        FillProgramList();
}

void RainerForm::RainOk_Click() {
    RainOutcome outcome = RainOutcome::Close;
    const bool ran = Guarded([this, &outcome] {
        if (m_operation == 1) {
            outcome = RainerExport(m_session, SelectedTexts(m_programList));
            return;
        }
        QList<RainerChoice> chosen;
        for (int i = 0; i < m_programList->count(); ++i) {
            const QListWidgetItem* item = m_programList->item(i);
            if (item->isSelected())
                chosen << RainerChoice{item->text(), item->data(Qt::UserRole).toInt()};
        }
        outcome = m_operation == 2 ? RainerImport(m_session, chosen) : RainerDelete(m_session, chosen);
    });
    if (ran && outcome == RainOutcome::StayOnList) {
        m_programList->setFocus();
        return;
    }
    accept();
}

void RainerForm::done(int result) {
    m_programList->clear();
    m_session.settings.RainerOperation = 0;
    ExchangeDialog::done(result);
}

} // namespace kestrova
