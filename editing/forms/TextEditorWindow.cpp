#include "editing/forms/TextEditorWindow.h"

#include "platform/ScreenText.h"
#include "platform/TextFile.h"

#include <QCloseEvent>
#include <QFontDatabase>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTextCursor>

namespace kestrova {

namespace {

class OpenEditor final : public StartedProgram {
public:
    explicit OpenEditor(TextEditorWindow* window) : m_window(window) {}
    [[nodiscard]] bool Running() const override { return m_window && m_window->isVisible(); }

private:
    QPointer<TextEditorWindow> m_window;
};

} // namespace

TextEditorWindow::TextEditorWindow(FileSystem& files, MessageService& messages, const QString& file,
                                   QWidget* parent)
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
    setCentralWidget(m_text);

    QMenu* fileMenu = menuBar()->addMenu(QStringLiteral("&File"));
    QAction* save = fileMenu->addAction(QStringLiteral("&Save"), this, [this] { (void)Save(); });
    save->setShortcut(QKeySequence::Save);
    fileMenu->addSeparator();
    fileMenu->addAction(QStringLiteral("E&xit"), this, &QWidget::close);

    try {
        QString text = ScreenTextOf(ReadAllBytes(m_files, m_file));
        text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
        m_text->setPlainText(text);
    } catch (const SystemError& error) {
        m_messages.ShowError(error.text());
    }
    m_text->document()->setModified(false);
    resize(760, 520);
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

bool TextEditorWindow::Save() {
    if (!Modified())
        return true;
    QString text = m_text->toPlainText();
    text.replace(u'\n', QStringLiteral("\r\n"));
    try {
        TextWriter writer(m_files, m_file, TextWriter::Mode::Replace);
        writer.WriteBytes(BytesOfScreenText(text));
        writer.Close();
    } catch (const SystemError& error) {
        m_messages.ShowError(error.text());
        return false;
    }
    m_text->document()->setModified(false);
    return true;
}

void TextEditorWindow::closeEvent(QCloseEvent* event) {
    if (Modified()) {
        const Answer answer = m_messages.Show({QStringLiteral("Save Changes To \"%1\" ?").arg(m_file),
                                               Buttons::YesNoCancel, Icon::Exclamation, 1});
        if (answer == Answer::Cancel || (answer == Answer::Yes && !Save())) {
            event->ignore();
            return;
        }
    }
    event->accept();
}

std::unique_ptr<StartedProgram> TextEditorWindow::Open(FileSystem& files, MessageService& messages,
                                                       const QString& file, QWidget& owner) {
    // A window of its own that stays open while the owner is hidden; deleted when closed.
    auto* window = new TextEditorWindow(files, messages, file, &owner);
    window->setWindowFlag(Qt::Window);
    window->showMaximized();
    window->activateWindow();
    return std::make_unique<OpenEditor>(window);
}

} // namespace kestrova
