#include "editing/forms/HistoryForm.h"

#include "editing/ProgramDiff.h"
#include "editing/forms/CompareForm.h"
#include "filestore/forms/FormParts.h"
#include "platform/TextFile.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace kestrova {

HistoryForm::HistoryForm(Session& session, const QString& program, QWidget* parent)
    : QDialog(parent), m_session(session), m_history(session.files, session.settings.SystemPath) {
    setObjectName(QStringLiteral("HistoryForm"));
    setWindowTitle(QStringLiteral("Program History"));
    m_programs = MakeFormList(this, QStringLiteral("HistoryPrograms"), QAbstractItemView::SingleSelection);
    m_versionList =
        MakeFormList(this, QStringLiteral("HistoryVersions"), QAbstractItemView::ExtendedSelection);
    auto* programsLabel = new QLabel(QStringLiteral("&Programs"), this);
    programsLabel->setBuddy(m_programs);
    auto* versionsLabel = new QLabel(QStringLiteral("&Versions"), this);
    versionsLabel->setBuddy(m_versionList);
    m_compareButton = MakeFormButton(this, QStringLiteral("HistoryCompare"), QStringLiteral("&Compare"));
    m_compareButton->setDefault(true);
    m_restoreButton = MakeFormButton(this, QStringLiteral("HistoryRestore"), QStringLiteral("&Restore"));
    QPushButton* close = MakeFormButton(this, QStringLiteral("HistoryClose"), QStringLiteral("Close"));

    auto* left = new QVBoxLayout;
    left->addWidget(programsLabel);
    left->addWidget(m_programs);
    auto* right = new QVBoxLayout;
    right->addWidget(versionsLabel);
    right->addWidget(m_versionList);
    auto* lists = new QHBoxLayout;
    lists->addLayout(left, 1);
    lists->addLayout(right, 2);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_compareButton);
    buttons->addWidget(m_restoreButton);
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(lists);
    layout->addLayout(buttons);
    setTabOrder(m_programs, m_versionList);
    setTabOrder(m_versionList, m_compareButton);
    setTabOrder(m_compareButton, m_restoreButton);
    setTabOrder(m_restoreButton, close);
    resize(760, 420);

    connect(m_programs, &QListWidget::currentRowChanged, this, &HistoryForm::ShowVersions);
    connect(m_versionList, &QListWidget::itemDoubleClicked, this, &HistoryForm::Compare_Click);
    connect(m_compareButton, &QPushButton::clicked, this, &HistoryForm::Compare_Click);
    connect(m_restoreButton, &QPushButton::clicked, this, &HistoryForm::Restore_Click);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    Guarded(session.messages, [&] { FillPrograms(program); });
    (m_versionList->count() > 0 ? m_versionList : m_programs)->setFocus();
}

CompareForm* HistoryForm::Compare() const {
    return m_compare.data();
}

QString HistoryForm::VersionLine(const HistoryVersion& version) {
    return QStringLiteral("%1   %2   %3 bytes").arg(version.when, version.operation).arg(version.size);
}

void HistoryForm::FillPrograms(const QString& selected) {
    const QStringList names = m_session.files.List(m_session.settings.CurrentPath,
                                                   QStringLiteral("*.prg;*.drw"), EntryKinds::Files);
    m_programs->addItems(names);
    int row = 0;
    for (int i = 0; i < names.size(); ++i)
        if (names.at(i).compare(selected, Qt::CaseInsensitive) == 0)
            row = i;
    if (!names.isEmpty())
        m_programs->setCurrentRow(row);
}

QString HistoryForm::Program() const {
    const QListWidgetItem* item = m_programs->currentItem();
    return item ? m_session.settings.CurrentPath + item->text() : QString();
}

void HistoryForm::ShowVersions() {
    Guarded(m_session.messages, [&] {
        m_versionList->clear();
        m_versions = Program().isEmpty() ? QList<HistoryVersion>() : m_history.Versions(Program());
        for (const HistoryVersion& v : std::as_const(m_versions))
            m_versionList->addItem(VersionLine(v));
        if (!m_versions.isEmpty())
            m_versionList->setCurrentRow(0);
    });
}

QList<HistoryVersion> HistoryForm::SelectedVersions() const {
    QList<HistoryVersion> chosen;
    for (int i = 0; i < m_versionList->count(); ++i)
        if (m_versionList->item(i)->isSelected())
            chosen << m_versions.at(i);
    return chosen;
}

void HistoryForm::Compare_Click() {
    const QList<HistoryVersion> chosen = SelectedVersions();
    if (chosen.isEmpty() || chosen.size() > 2) {
        m_session.messages.Refuse(QStringLiteral("Select One Version, Or Two To Compare !"));
        m_versionList->setFocus();
        return;
    }
    Guarded(m_session.messages, [&] {
        // The list is newest first: the second selected is the older.
        const HistoryVersion& older = chosen.size() == 2 ? chosen.at(1) : chosen.at(0);
        const QString newerTitle =
            chosen.size() == 2 ? VersionLine(chosen.at(0)) : QStringLiteral("Current Program");
        const QByteArray newerBytes = chosen.size() == 2 ? m_history.Bytes(chosen.at(0))
                                      : m_session.files.IsFile(older.program)
                                          ? ReadAllBytes(m_session.files, older.program)
                                          : QByteArray();
        const ProgramDiff diff(m_history.Bytes(older), newerBytes);
        if (m_compare)
            m_compare->close();
        m_compare = new CompareForm(diff, VersionLine(older), newerTitle, this);
        m_compare->setAttribute(Qt::WA_DeleteOnClose);
        // Closed by the operator, it gives the keyboard back to the versions. (Not on its
        // deletion: that also comes while this form is being deleted, its lists gone.)
        connect(m_compare, &QDialog::finished, this, [this] {
            activateWindow();
            m_versionList->setFocus();
        });
        m_compare->show();
        // The keyboard goes with it, so that F8 and Esc work on the comparison at once.
        m_compare->raise();
        m_compare->activateWindow();
    });
}

void HistoryForm::Restore_Click() {
    const QList<HistoryVersion> chosen = SelectedVersions();
    if (chosen.size() != 1) {
        m_session.messages.Refuse(QStringLiteral("Select One Version To Restore !"));
        m_versionList->setFocus();
        return;
    }
    const HistoryVersion version = chosen.first();
    if (m_session.messages.Ask(
            QStringLiteral("Restore The Version Of %1 As %2 ?").arg(version.when, Quoted(version.program))) !=
        Answer::Yes)
        return;
    Guarded(m_session.messages, [&] {
        RestoreVersion(m_session, version);
        ShowVersions();
    });
    m_versionList->setFocus();
}

} // namespace kestrova
