#include "editing/forms/TextEditorWindow.h"

#include "editing/LineEnds.h"
#include "editing/forms/NcHighlighter.h"
#include "editing/forms/ProgramView.h"
#include "platform/ScreenText.h"
#include "platform/TextFile.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QElapsedTimer>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QShortcut>
#include <QSplitter>
#include <QStatusBar>
#include <QTextBlock>
#include <QTextCursor>
#include <QTimer>
#include <QVBoxLayout>

namespace kestrova {

namespace {

// Files up to this size are read in at once; larger ones a piece at a time.
constexpr qsizetype ReadAtOnce = 1 << 20;
// The time one piece may take before the event loop gets its turn.
constexpr qint64 PieceMilliseconds = 25;
constexpr int LinesPerStep = 2000;
// How long the text rests after a change before the drawing is read from it again.
constexpr int DrawingAfterChangeMilliseconds = 600;

class OpenEditor final : public StartedProgram {
public:
    explicit OpenEditor(TextEditorWindow* window) : m_window(window) {}
    [[nodiscard]] bool Running() const override { return m_window && m_window->isVisible(); }

private:
    QPointer<TextEditorWindow> m_window;
};

// The end of a line that does not end in CR LF. Lines without it end in CR LF, as the system
// writes them: typed lines included.
class LineEndData final : public QTextBlockUserData {
public:
    explicit LineEndData(LineEnd end) : end(end) {}
    LineEnd end;
};

LineEnd EndOf(const QTextBlock& block) {
    const auto* data = static_cast<const LineEndData*>(block.userData());
    return data ? data->end : LineEnd::CrLf;
}

QTextDocument::FindFlags Flags(bool matchCase) {
    return matchCase ? QTextDocument::FindCaseSensitively : QTextDocument::FindFlags();
}

} // namespace

TextEditorWindow::TextEditorWindow(FileSystem& files, MessageService& messages, const QString& file,
                                   QWidget* parent, const MachineFrame& machine)
    : QMainWindow(parent), m_files(files), m_messages(messages), m_file(files.FullPath(file)),
      m_text(new QPlainTextEdit(this)) {
    setObjectName(QStringLiteral("TextEditor"));
    setAttribute(Qt::WA_DeleteOnClose);
    // The main window may be hidden while the operator edits: closing this one must not end the program.
    setAttribute(Qt::WA_QuitOnClose, false);
    setWindowTitle(m_file + QStringLiteral(" - Kestrova"));

    m_text->setObjectName(QStringLiteral("EditorText"));
    m_text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_highlighter = new NcHighlighter(m_text->document());

    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    m_split = new QSplitter(Qt::Horizontal, central);
    m_split->addWidget(m_text);
    m_view = new ProgramView(m_split);
    m_view->SetMachine(machine);
    m_view->hide();
    m_split->addWidget(m_view);
    m_split->setStretchFactor(0, 1);
    m_split->setStretchFactor(1, 1);
    layout->addWidget(m_split);
    BuildFindBar();
    layout->addWidget(m_findBar);
    setCentralWidget(central);

    m_position = new QLabel(this);
    m_position->setObjectName(QStringLiteral("EditorPosition"));
    statusBar()->addPermanentWidget(m_position);
    connect(m_text, &QPlainTextEdit::cursorPositionChanged, this, &TextEditorWindow::ShowPosition);
    // Text and drawing follow each other.
    connect(m_text, &QPlainTextEdit::cursorPositionChanged, this,
            [this] { m_view->SetCurrentLine(m_text->textCursor().blockNumber()); });
    connect(m_view, &ProgramView::LineClicked, this, [this](int line) { GoToLine(line + 1); });
    connect(m_view, &ProgramView::LoadFinished, this,
            [this] { m_view->SetCurrentLine(m_text->textCursor().blockNumber()); });
    m_drawingTimer = new QTimer(this);
    m_drawingTimer->setSingleShot(true);
    m_drawingTimer->setInterval(DrawingAfterChangeMilliseconds);
    connect(m_drawingTimer, &QTimer::timeout, this, &TextEditorWindow::ReadDrawing);
    connect(m_text->document(), &QTextDocument::contentsChanged, this, [this] {
        if (Loading())
            return;
        m_drawingStale = true;
        if (DrawingShown())
            m_drawingTimer->start();
    });
    BuildMenus();
    ShowPosition();
    resize(760, 520);

    try {
        m_bytes = ReadAllBytes(m_files, m_file);
    } catch (const SystemError& error) {
        m_messages.ShowError(error.text());
        return;
    }
    // Reading in is not something to undo, nor a change.
    m_text->document()->setUndoRedoEnabled(false);
    m_text->setReadOnly(true);
    m_loadPos = 0;
    m_loadTimer = new QTimer(this);
    m_loadTimer->setInterval(0);
    connect(m_loadTimer, &QTimer::timeout, this, &TextEditorWindow::LoadPiece);
    if (m_bytes.size() <= ReadAtOnce) {
        while (Loading())
            LoadPiece();
    } else {
        LoadPiece();
        m_loadTimer->start();
    }
}

TextEditorWindow::~TextEditorWindow() = default;

void TextEditorWindow::LoadPiece() {
    QElapsedTimer clock;
    clock.start();
    QTextDocument* document = m_text->document();
    do {
        // A run of lines, converted and put at the end in one go; then the ends that are not
        // CR LF are noted on their lines.
        const qsizetype from = m_loadPos;
        std::vector<std::pair<int, LineEnd>> odd;
        int lines = 0;
        bool last = false;
        while (lines < LinesPerStep) {
            const LineSpan line = LineAt(m_bytes, m_loadPos);
            m_loadPos = line.start + line.length + qsizetype(qstrlen(LineEndBytes(line.end)));
            if (line.end == LineEnd::Lf || line.end == LineEnd::Cr)
                odd.emplace_back(m_loadedLines + lines, line.end);
            ++lines;
            if (line.end == LineEnd::None) {
                last = true;
                break;
            }
        }
        QString text = ScreenTextOf(m_bytes.mid(from, m_loadPos - from));
        text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
        text.replace(u'\r', u'\n');
        QTextCursor cursor(document);
        cursor.movePosition(QTextCursor::End);
        cursor.insertText(text);
        for (const auto& [number, end] : odd)
            document->findBlockByNumber(number).setUserData(new LineEndData(end));
        // The piece's lines now stand in the window, the next piece starting in the empty last one.
        m_loadedLines += lines;
        if (last) {
            m_loadPos = -1;
            break;
        }
    } while (clock.elapsed() < PieceMilliseconds);

    if (Loading()) {
        statusBar()->showMessage(
            QStringLiteral("Reading %1 %").arg(m_loadPos * 100 / qMax<qsizetype>(1, m_bytes.size())));
        return;
    }
    m_loadTimer->stop();
    m_bytes = QByteArray();
    document->setUndoRedoEnabled(true);
    document->setModified(false);
    m_text->setReadOnly(false);
    m_text->moveCursor(QTextCursor::Start);
    statusBar()->clearMessage();
    if (DrawingShown())
        ReadDrawing();
    Q_EMIT LoadFinished();
}

void TextEditorWindow::BuildMenus() {
    QMenu* fileMenu = menuBar()->addMenu(QStringLiteral("&File"));
    QAction* save = fileMenu->addAction(QStringLiteral("&Save"), this, [this] { (void)Save(); });
    save->setShortcut(QKeySequence::Save);
    fileMenu->addSeparator();
    fileMenu->addAction(QStringLiteral("E&xit"), this, &QWidget::close);

    QMenu* edit = menuBar()->addMenu(QStringLiteral("&Edit"));
    QAction* undo = edit->addAction(QStringLiteral("&Undo"), m_text, &QPlainTextEdit::undo);
    undo->setShortcut(QKeySequence::Undo);
    undo->setEnabled(false);
    connect(m_text, &QPlainTextEdit::undoAvailable, undo, &QAction::setEnabled);
    QAction* redo = edit->addAction(QStringLiteral("&Redo"), m_text, &QPlainTextEdit::redo);
    redo->setShortcut(QKeySequence::Redo);
    redo->setEnabled(false);
    connect(m_text, &QPlainTextEdit::redoAvailable, redo, &QAction::setEnabled);
    edit->addSeparator();
    edit->addAction(QStringLiteral("Cu&t"), m_text, &QPlainTextEdit::cut)->setShortcut(QKeySequence::Cut);
    edit->addAction(QStringLiteral("&Copy"), m_text, &QPlainTextEdit::copy)->setShortcut(QKeySequence::Copy);
    edit->addAction(QStringLiteral("&Paste"), m_text, &QPlainTextEdit::paste)
        ->setShortcut(QKeySequence::Paste);
    edit->addSeparator();
    edit->addAction(QStringLiteral("&Find..."), this, [this] { ShowFindBar(false); })
        ->setShortcut(QKeySequence::Find);
    edit->addAction(QStringLiteral("Find &Next"), this,
                    [this] {
                        if (m_findBox->text().isEmpty())
                            ShowFindBar(false);
                        else
                            (void)FindNext(m_findBox->text(), m_matchCase->isChecked());
                    })
        ->setShortcut(QKeySequence::FindNext);
    edit->addAction(QStringLiteral("R&eplace..."), this, [this] { ShowFindBar(true); })
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_H));
    edit->addAction(QStringLiteral("&Go To Line..."), this, &TextEditorWindow::AskGoToLine)
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_G));

    QMenu* view = menuBar()->addMenu(QStringLiteral("&View"));
    m_drawingAction = view->addAction(QStringLiteral("Program &Drawing"));
    m_drawingAction->setObjectName(QStringLiteral("ShowDrawing"));
    m_drawingAction->setCheckable(true);
    m_drawingAction->setShortcut(QKeySequence(Qt::Key_F4));
    connect(m_drawingAction, &QAction::toggled, this, &TextEditorWindow::ShowDrawing);
    QAction* pane = view->addAction(QStringLiteral("Switch &Pane"), this, [this] {
        if (DrawingShown() && !m_view->hasFocus())
            m_view->setFocus();
        else
            m_text->setFocus();
    });
    pane->setShortcut(QKeySequence(Qt::Key_F6));
}

void TextEditorWindow::ShowDrawing(bool shown) {
    if (m_drawingAction->isChecked() != shown)
        m_drawingAction->setChecked(shown); // comes back here through toggled
    if (shown == DrawingShown())
        return;
    m_view->setVisible(shown);
    if (!shown) {
        m_text->setFocus();
        return;
    }
    if (m_drawingStale && !Loading())
        ReadDrawing();
    m_view->setFocus();
}

bool TextEditorWindow::DrawingShown() const {
    return !m_view->isHidden();
}

void TextEditorWindow::ReadDrawing() {
    m_drawingTimer->stop();
    m_drawingStale = false;
    if (Modified()) {
        m_view->SetProgramText(TextBytes());
        m_view->SetCurrentLine(m_text->textCursor().blockNumber());
        return;
    }
    try {
        m_view->Load(m_files, m_file);
    } catch (const SystemError&) {
        m_view->SetProgramText(TextBytes()); // the text in the window is the program all the same
    }
}

void TextEditorWindow::BuildFindBar() {
    m_findBar = new QWidget(this);
    m_findBar->setObjectName(QStringLiteral("FindBar"));
    auto* bar = new QVBoxLayout(m_findBar);
    bar->setContentsMargins(4, 4, 4, 4);

    auto* findRow = new QHBoxLayout;
    auto* findLabel = new QLabel(QStringLiteral("Fi&nd:"), m_findBar);
    m_findBox = new QLineEdit(m_findBar);
    m_findBox->setObjectName(QStringLiteral("FindBox"));
    findLabel->setBuddy(m_findBox);
    m_matchCase = new QCheckBox(QStringLiteral("&Match Case"), m_findBar);
    auto* next = new QPushButton(QStringLiteral("Find Next"), m_findBar);
    auto* close = new QPushButton(QStringLiteral("Close"), m_findBar);
    findRow->addWidget(findLabel);
    findRow->addWidget(m_findBox, 1);
    findRow->addWidget(m_matchCase);
    findRow->addWidget(next);
    findRow->addWidget(close);

    m_replaceRow = new QWidget(m_findBar);
    auto* replaceRow = new QHBoxLayout(m_replaceRow);
    replaceRow->setContentsMargins(0, 0, 0, 0);
    auto* replaceLabel = new QLabel(QStringLiteral("Re&place With:"), m_replaceRow);
    m_replaceBox = new QLineEdit(m_replaceRow);
    m_replaceBox->setObjectName(QStringLiteral("ReplaceBox"));
    replaceLabel->setBuddy(m_replaceBox);
    auto* replace = new QPushButton(QStringLiteral("&Replace"), m_replaceRow);
    auto* replaceAll = new QPushButton(QStringLiteral("Replace &All"), m_replaceRow);
    replaceRow->addWidget(replaceLabel);
    replaceRow->addWidget(m_replaceBox, 1);
    replaceRow->addWidget(replace);
    replaceRow->addWidget(replaceAll);

    bar->addLayout(findRow);
    bar->addWidget(m_replaceRow);
    m_findBar->hide();

    const auto findNext = [this] { (void)FindNext(m_findBox->text(), m_matchCase->isChecked()); };
    connect(m_findBox, &QLineEdit::returnPressed, this, findNext);
    connect(next, &QPushButton::clicked, this, findNext);
    connect(m_replaceBox, &QLineEdit::returnPressed, this,
            [this] { (void)ReplaceNext(m_findBox->text(), m_replaceBox->text(), m_matchCase->isChecked()); });
    connect(replace, &QPushButton::clicked, this,
            [this] { (void)ReplaceNext(m_findBox->text(), m_replaceBox->text(), m_matchCase->isChecked()); });
    connect(replaceAll, &QPushButton::clicked, this,
            [this] { (void)ReplaceAll(m_findBox->text(), m_replaceBox->text(), m_matchCase->isChecked()); });
    const auto hide = [this] {
        m_findBar->hide();
        m_text->setFocus();
    };
    connect(close, &QPushButton::clicked, this, hide);
    auto* escape = new QShortcut(QKeySequence(Qt::Key_Escape), m_findBar, nullptr, nullptr,
                                 Qt::WidgetWithChildrenShortcut);
    connect(escape, &QShortcut::activated, this, hide);
}

void TextEditorWindow::ShowFindBar(bool replace) {
    m_replaceRow->setVisible(replace);
    m_findBar->show();
    const QString selected = m_text->textCursor().selectedText();
    if (!selected.isEmpty() && !selected.contains(QChar::ParagraphSeparator))
        m_findBox->setText(selected);
    m_findBox->setFocus();
    m_findBox->selectAll();
}

void TextEditorWindow::AskGoToLine() {
    bool ok = false;
    const int line = QInputDialog::getInt(this, QStringLiteral("Go To Line"), QStringLiteral("Line Number:"),
                                          m_text->textCursor().blockNumber() + 1, 1,
                                          m_text->document()->blockCount(), 1, &ok);
    if (ok)
        GoToLine(line);
}

void TextEditorWindow::GoToLine(int line) {
    QTextDocument* document = m_text->document();
    const int number = qBound(1, line, document->blockCount()) - 1;
    m_text->setTextCursor(QTextCursor(document->findBlockByNumber(number)));
    m_text->centerCursor();
}

bool TextEditorWindow::FindNext(const QString& text, bool matchCase) {
    if (text.isEmpty())
        return false;
    if (m_text->find(text, Flags(matchCase)))
        return true;
    // Past the end: from the top again.
    const QTextCursor found = m_text->document()->find(text, 0, Flags(matchCase));
    if (found.isNull()) {
        m_messages.Beep();
        statusBar()->showMessage(QStringLiteral("\"%1\" Not Found").arg(text), 4000);
        return false;
    }
    m_text->setTextCursor(found);
    return true;
}

bool TextEditorWindow::ReplaceNext(const QString& text, const QString& replacement, bool matchCase) {
    if (text.isEmpty() || m_text->isReadOnly())
        return false;
    QTextCursor cursor = m_text->textCursor();
    if (cursor.hasSelection() &&
        cursor.selectedText().compare(text, matchCase ? Qt::CaseSensitive : Qt::CaseInsensitive) == 0)
        cursor.insertText(replacement);
    return FindNext(text, matchCase);
}

int TextEditorWindow::ReplaceAll(const QString& text, const QString& replacement, bool matchCase) {
    if (text.isEmpty() || m_text->isReadOnly())
        return 0;
    QTextDocument* document = m_text->document();
    QTextCursor edit(document);
    edit.beginEditBlock();
    int count = 0;
    QTextCursor found = document->find(text, 0, Flags(matchCase));
    while (!found.isNull()) {
        found.insertText(replacement);
        ++count;
        found = document->find(text, found, Flags(matchCase));
    }
    edit.endEditBlock();
    statusBar()->showMessage(QStringLiteral("%1 Replaced").arg(count), 4000);
    if (count == 0)
        m_messages.Beep();
    return count;
}

QString TextEditorWindow::Position() const {
    const QTextCursor cursor = m_text->textCursor();
    return QStringLiteral("Ln %1, Col %2").arg(cursor.blockNumber() + 1).arg(cursor.positionInBlock() + 1);
}

void TextEditorWindow::ShowPosition() {
    m_position->setText(Position());
}

QString TextEditorWindow::Text() const {
    return m_text->toPlainText();
}

void TextEditorWindow::SetText(const QString& text) {
    // As typed: the whole text replaced through the cursor, so that it counts as a change.
    QTextCursor cursor(m_text->document());
    cursor.select(QTextCursor::Document);
    cursor.insertText(text);
}

bool TextEditorWindow::Modified() const {
    return m_text->document()->isModified();
}

QByteArray TextEditorWindow::TextBytes() const {
    QByteArray bytes;
    for (QTextBlock block = m_text->document()->begin(); block.isValid(); block = block.next()) {
        bytes += BytesOfScreenText(block.text());
        if (block.next().isValid())
            bytes += LineEndBytes(EndOf(block));
    }
    return bytes;
}

bool TextEditorWindow::Save() {
    if (Loading())
        return false;
    if (!Modified())
        return true;
    if (m_keepOld)
        m_keepOld(m_file);
    try {
        TextWriter writer(m_files, m_file, TextWriter::Mode::Replace);
        writer.WriteBytes(TextBytes());
        writer.Close();
    } catch (const SystemError& error) {
        m_messages.ShowError(error.text());
        return false;
    }
    m_text->document()->setModified(false);
    return true;
}

void TextEditorWindow::closeEvent(QCloseEvent* event) {
    if (!Loading() && Modified()) {
        const Answer answer = m_messages.Show({QStringLiteral("Save Changes To \"%1\" ?").arg(m_file),
                                               Buttons::YesNoCancel, Icon::Exclamation, 1});
        if (answer == Answer::Cancel || (answer == Answer::Yes && !Save())) {
            event->ignore();
            return;
        }
    }
    if (m_loadTimer)
        m_loadTimer->stop();
    event->accept();
}

std::unique_ptr<StartedProgram> TextEditorWindow::Open(FileSystem& files, MessageService& messages,
                                                       const QString& file, QWidget& owner,
                                                       const MachineFrame& machine,
                                                       std::function<void(const QString&)> keepOld) {
    // A window of its own that stays open while the owner is hidden; deleted when closed.
    auto* window = new TextEditorWindow(files, messages, file, &owner, machine);
    window->KeepOldTextWith(std::move(keepOld));
    window->setWindowFlag(Qt::Window);
    window->showMaximized();
    window->activateWindow();
    return std::make_unique<OpenEditor>(window);
}

} // namespace kestrova
