#include "editing/forms/CompareForm.h"

#include "filestore/forms/FormParts.h"
#include "platform/ScreenText.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QShortcut>
#include <QTextBlock>
#include <QVBoxLayout>
#include <algorithm>

namespace kestrova {

namespace {

// The mark at the head of a row on either side.
QString Mark(LineChange change) {
    switch (change) {
    case LineChange::Changed:
        return QStringLiteral("~ ");
    case LineChange::Added:
        return QStringLiteral("+ ");
    case LineChange::Removed:
        return QStringLiteral("- ");
    case LineChange::Same:
        break;
    }
    return QStringLiteral("  ");
}

QPlainTextEdit* MakeSide(QWidget* parent, const QString& name, const QString& text) {
    auto* side = new QPlainTextEdit(parent);
    side->setObjectName(name);
    side->setReadOnly(true);
    side->setTextInteractionFlags(Qt::TextSelectableByKeyboard | Qt::TextSelectableByMouse);
    side->setLineWrapMode(QPlainTextEdit::NoWrap);
    side->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    side->setPlainText(text);
    return side;
}

// Colours the rows that differ: changed yellow, added green, removed red.
void MarkRows(QPlainTextEdit* side, const ProgramDiff& diff) {
    QList<QTextEdit::ExtraSelection> marks;
    QTextBlock block = side->document()->begin();
    for (const DiffRow& row : diff.Rows()) {
        if (row.change != LineChange::Same) {
            QTextEdit::ExtraSelection mark;
            mark.cursor = QTextCursor(block);
            mark.format.setProperty(QTextFormat::FullWidthSelection, true);
            mark.format.setBackground(row.change == LineChange::Changed ? QColor(255, 240, 160)
                                      : row.change == LineChange::Added ? QColor(200, 240, 200)
                                                                        : QColor(250, 200, 200));
            marks << mark;
        }
        block = block.next();
    }
    side->setExtraSelections(marks);
}

} // namespace

CompareForm::CompareForm(const ProgramDiff& diff, const QString& olderTitle, const QString& newerTitle,
                         QWidget* parent)
    : QDialog(parent), m_changes(diff.ChangeStarts()) {
    setObjectName(QStringLiteral("CompareForm"));
    setWindowTitle(QStringLiteral("Compare Versions"));
    QStringList older;
    QStringList newer;
    older.reserve(qsizetype(diff.Rows().size()));
    newer.reserve(qsizetype(diff.Rows().size()));
    for (const DiffRow& row : diff.Rows()) {
        const QString mark = Mark(row.change);
        older << (row.older < 0 ? QString() : mark + ScreenTextOf(diff.OlderLine(row.older)));
        newer << (row.newer < 0 ? QString() : mark + ScreenTextOf(diff.NewerLine(row.newer)));
    }
    m_older = MakeSide(this, QStringLiteral("OlderText"), older.join(u'\n'));
    m_newer = MakeSide(this, QStringLiteral("NewerText"), newer.join(u'\n'));
    MarkRows(m_older, diff);
    MarkRows(m_newer, diff);
    // The two sides scroll as one.
    for (auto [from, to] : {std::pair{m_older, m_newer}, std::pair{m_newer, m_older}}) {
        connect(from->verticalScrollBar(), &QScrollBar::valueChanged, to->verticalScrollBar(),
                &QScrollBar::setValue);
    }

    m_counts = new QLabel(QStringLiteral("%1 Changed, %2 Added, %3 Removed")
                              .arg(diff.Changed())
                              .arg(diff.Added())
                              .arg(diff.Removed()),
                          this);
    m_counts->setObjectName(QStringLiteral("Counts"));
    auto* olderLabel = new QLabel(olderTitle, this);
    auto* newerLabel = new QLabel(newerTitle, this);
    olderLabel->setBuddy(m_older);
    newerLabel->setBuddy(m_newer);

    QPushButton* next = MakeFormButton(this, QStringLiteral("NextChange"), QStringLiteral("&Next Change"));
    QPushButton* previous =
        MakeFormButton(this, QStringLiteral("PreviousChange"), QStringLiteral("&Previous Change"));
    QPushButton* close = MakeFormButton(this, QStringLiteral("CompareClose"), QStringLiteral("Close"));
    connect(next, &QPushButton::clicked, this, &CompareForm::NextChange);
    connect(previous, &QPushButton::clicked, this, &CompareForm::PreviousChange);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    auto* f8 = new QShortcut(QKeySequence(Qt::Key_F8), this);
    connect(f8, &QShortcut::activated, this, &CompareForm::NextChange);
    auto* shiftF8 = new QShortcut(QKeySequence(Qt::SHIFT | Qt::Key_F8), this);
    connect(shiftF8, &QShortcut::activated, this, &CompareForm::PreviousChange);

    auto* sides = new QHBoxLayout;
    for (auto [label, side] : {std::pair{olderLabel, m_older}, std::pair{newerLabel, m_newer}}) {
        auto* column = new QVBoxLayout;
        column->addWidget(label);
        column->addWidget(side);
        sides->addLayout(column);
    }
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_counts);
    buttons->addStretch();
    buttons->addWidget(previous);
    buttons->addWidget(next);
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(sides);
    layout->addLayout(buttons);
    setTabOrder(m_older, m_newer);
    setTabOrder(m_newer, previous);
    setTabOrder(previous, next);
    setTabOrder(next, close);
    resize(1000, 600);
    m_older->setFocus();
    if (!m_changes.empty())
        GoToRow(m_changes.front());
}

int CompareForm::CurrentRow() const {
    return m_older->textCursor().blockNumber();
}

QString CompareForm::Counts() const {
    return m_counts->text();
}

QString CompareForm::SideText(bool newer) const {
    return (newer ? m_newer : m_older)->toPlainText();
}

void CompareForm::GoToRow(int row) {
    for (QPlainTextEdit* side : {m_older, m_newer}) {
        QTextCursor cursor(side->document()->findBlockByNumber(row));
        side->setTextCursor(cursor);
        side->centerCursor();
    }
}

void CompareForm::NextChange() {
    const int row = CurrentRow();
    const auto next = std::upper_bound(m_changes.begin(), m_changes.end(), row);
    GoToRow(next != m_changes.end() ? *next : (m_changes.empty() ? row : m_changes.front()));
}

void CompareForm::PreviousChange() {
    const int row = CurrentRow();
    const auto at = std::lower_bound(m_changes.begin(), m_changes.end(), row);
    GoToRow(at != m_changes.begin() ? *(at - 1) : (m_changes.empty() ? row : m_changes.back()));
}

} // namespace kestrova
