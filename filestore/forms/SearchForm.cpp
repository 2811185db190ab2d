#include "filestore/forms/SearchForm.h"

#include "filestore/FileSearch.h"
#include "filestore/forms/FormParts.h"
#include "platform/Blanks.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace kestrova {

SearchForm::SearchForm(Session& session, QWidget* parent) : QDialog(parent), m_session(session) {
    setObjectName(QStringLiteral("SearchForm"));
    setWindowTitle(QStringLiteral("File Search"));
    BuildControls();
    Form_Load();
}

void SearchForm::BuildControls() {
    m_criteriaFrame = new QFrame(this);
    m_criteriaFrame->setObjectName(QStringLiteral("CriteriaFrame"));
    m_criteriaBox = new QLineEdit(m_criteriaFrame);
    m_criteriaBox->setObjectName(QStringLiteral("CriteriaBox"));
    auto* textLabel = new QLabel(QStringLiteral("&Name Contains"), m_criteriaFrame);
    textLabel->setBuddy(m_criteriaBox);
    m_criteriaLabel = new QLabel(m_criteriaFrame);
    m_criteriaLabel->setObjectName(QStringLiteral("CriteriaLabel"));
    m_checkFrame = new QFrame(m_criteriaFrame);
    m_checkFrame->setObjectName(QStringLiteral("CheckFrame"));
    m_drawingsCheck = new QCheckBox(QStringLiteral("&Drawings"), m_checkFrame);
    m_drawingsCheck->setObjectName(QStringLiteral("FileCheck1"));
    m_programsCheck = new QCheckBox(QStringLiteral("&Programs"), m_checkFrame);
    m_programsCheck->setObjectName(QStringLiteral("FileCheck2"));
    auto* checks = new QHBoxLayout(m_checkFrame);
    checks->setContentsMargins(0, 0, 0, 0);
    checks->addWidget(m_drawingsCheck);
    checks->addWidget(m_programsCheck);
    m_criteriaOk = MakeFormButton(m_criteriaFrame, QStringLiteral("CriteriaOk"), QStringLiteral("OK"));
    m_criteriaCncl =
        MakeFormButton(m_criteriaFrame, QStringLiteral("CriteriaCncl"), QStringLiteral("Cancel"));
    auto* criteriaButtons = new QHBoxLayout;
    criteriaButtons->addStretch(1);
    criteriaButtons->addWidget(m_criteriaOk);
    criteriaButtons->addWidget(m_criteriaCncl);
    auto* criteria = new QVBoxLayout(m_criteriaFrame);
    criteria->addWidget(m_criteriaLabel);
    criteria->addWidget(m_checkFrame);
    criteria->addWidget(textLabel);
    criteria->addWidget(m_criteriaBox);
    criteria->addLayout(criteriaButtons);

    m_searchFrame = new QFrame(this);
    m_searchFrame->setObjectName(QStringLiteral("SearchFrame"));
    m_searchLabel = new QLabel(m_searchFrame);
    m_searchLabel->setObjectName(QStringLiteral("SearchLabel1"));
    m_kindLabel = new QLabel(m_searchFrame);
    m_kindLabel->setObjectName(QStringLiteral("SearchLabel2"));
    // The names and their directories scroll and select as one list.
    m_searchList = new QTreeWidget(m_searchFrame);
    m_searchList->setObjectName(QStringLiteral("SearchList"));
    m_searchList->setColumnCount(2);
    m_searchList->setHeaderLabels({QStringLiteral("Name"), QStringLiteral("Directory")});
    m_searchList->setRootIsDecorated(false);
    m_searchList->setUniformRowHeights(true);
    m_searchList->setSelectionMode(QAbstractItemView::SingleSelection);
    m_searchList->header()->setSectionResizeMode(QHeaderView::Stretch);
    m_searchList->setMinimumSize(420, 260);
    m_searchOk = MakeFormButton(m_searchFrame, QStringLiteral("SearchOk"), QStringLiteral("OK"));
    m_searchCncl = MakeFormButton(m_searchFrame, QStringLiteral("SearchCncl"), QStringLiteral("Cancel"));
    auto* captions = new QHBoxLayout;
    captions->addWidget(m_searchLabel);
    captions->addStretch(1);
    captions->addWidget(m_kindLabel);
    auto* searchButtons = new QHBoxLayout;
    searchButtons->addStretch(1);
    searchButtons->addWidget(m_searchOk);
    searchButtons->addWidget(m_searchCncl);
    auto* results = new QVBoxLayout(m_searchFrame);
    results->addLayout(captions);
    results->addWidget(m_searchList, 1);
    results->addLayout(searchButtons);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_criteriaFrame);
    layout->addWidget(m_searchFrame);

    connect(m_criteriaOk, &QPushButton::clicked, this, &SearchForm::CriteriaOk_Click);
    connect(m_criteriaCncl, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_searchOk, &QPushButton::clicked, this, &SearchForm::SearchOk_Click);
    connect(m_searchCncl, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_searchList, &QTreeWidget::itemDoubleClicked, this, &SearchForm::SearchOk_Click);
}

void SearchForm::Form_Load() {
    GlobalSettings& g = m_session.settings;
    g.SearchResult = {};
    const int mode = g.SearchMode;
    m_machineDir = SearchMachineDir(g, mode);
    const bool both = mode == 3;
    m_drawingsCheck->setChecked(mode == 1 || both);
    m_programsCheck->setChecked(!(mode == 1));
    m_checkFrame->setVisible(both);
    m_criteriaLabel->setVisible(!both);
    m_criteriaLabel->setText(mode == 1 ? QStringLiteral("Drawings") : QStringLiteral("Programs"));
    ShowPage(false);
}

void SearchForm::ShowPage(bool results) {
    m_criteriaFrame->setVisible(!results);
    m_searchFrame->setVisible(results);
    m_criteriaOk->setDefault(!results);
    m_searchOk->setDefault(results);
    if (results)
        m_searchList->setFocus();
    else
        m_criteriaBox->setFocus();
    adjustSize();
}

void SearchForm::CriteriaOk_Click() {
    MessageService& messages = m_session.messages;
    const QString text = TrimBlanks(m_criteriaBox->text());
    const bool drawings = m_drawingsCheck->isChecked();
    const bool programs = m_programsCheck->isChecked();
    if (const QString refusal = SearchRefusal(text, drawings, programs); !refusal.isEmpty()) {
        messages.Refuse(refusal);
        m_criteriaBox->setFocus();
        return;
    }
    QList<SearchRow> rows;
    {
        BusyCursor busy(messages);
        m_searchList->clear();
        if (!Guarded(messages,
                     [&] { rows = SearchFiles(m_session, m_machineDir, text, drawings, programs); }))
            return;
        QList<QTreeWidgetItem*> items;
        items.reserve(rows.size());
        for (const SearchRow& row : rows)
            items << new QTreeWidgetItem(QStringList{row.name, row.directory});
        m_searchList->addTopLevelItems(items);
    }
    if (rows.isEmpty()) {
        messages.Refuse(NothingFoundMessage(text, drawings, programs));
        m_criteriaBox->setFocus();
        return;
    }
    m_searchList->setCurrentItem(m_searchList->topLevelItem(0));
    m_searchLabel->setText(SearchTextCaption(text));
    m_kindLabel->setText(SearchKindCaption(drawings, programs));
    ShowPage(true);
}

void SearchForm::SearchOk_Click() {
    const QTreeWidgetItem* row = m_searchList->currentItem();
    if (!row)
        return;
    SearchResultRecord& result = m_session.settings.SearchResult;
    result.flag = -1;
    result.machineDir = m_machineDir;
    result.name = TrimBlanks(row->text(0));
    result.directory = TrimBlanks(row->text(1));
    accept();
}

bool PickFileBySearch(Session& session, QWidget* parent, Int16 mode) {
    session.settings.SearchMode = mode;
    SearchForm form(session, parent);
    form.exec();
    return session.settings.SearchResult.flag == -1;
}

} // namespace kestrova
