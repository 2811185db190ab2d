#pragma once

#include "editing/MachineFrame.h"
#include "platform/FileSystem.h"
#include "platform/MessageService.h"
#include "platform/ProgramLauncher.h"

#include <QByteArray>
#include <QMainWindow>
#include <functional>
#include <memory>

class QCheckBox;
class QLabel;
class QLineEdit;
class QAction;
class QPlainTextEdit;
class QSplitter;
class QTimer;

namespace kestrova {

class NcHighlighter;
class ProgramView;

// The system's own text editor: serves for "Notepad.exe" and for any editor that cannot start on
// this host. It edits one settings or program file as single-byte text shown in Windows-1252,
// with line and column in its status bar, find and replace, go to line, undo, and a plain
// colouring of NC words.
//
// Every line keeps its own line end (CR LF, LF or CR) and a last line without one stays so:
// saving writes back byte for byte what was not changed; new lines end in CR LF. A file saved
// without a change is not written at all. A large file is read into the window a piece at a
// time, so the other windows go on painting meanwhile; it cannot be changed until it is in.
// The window deletes itself when closed and never ends the program by closing.
//
// F4 (View > Program Drawing) shows the program's drawing in a pane beside the text, for the
// machine given; F6 moves between text and drawing. The element of the cursor's line is
// highlighted, and a click on an element puts the cursor on its line. The drawing is read from
// the file, and again from the text a moment after each change.
class TextEditorWindow : public QMainWindow {
    Q_OBJECT
public:
    // Opens a file (a system path); a file that cannot be read is reported and the window stays empty.
    TextEditorWindow(FileSystem& files, MessageService& messages, const QString& file,
                     QWidget* parent = nullptr, const MachineFrame& machine = {});
    ~TextEditorWindow() override;

    // Writes the file when the text was changed; false when the write failed (reported) or the
    // file is still being read.
    bool Save();
    [[nodiscard]] QString Text() const;
    // Replaces the whole text as the operator would, marking it changed.
    void SetText(const QString& text);
    [[nodiscard]] bool Modified() const;
    // The file is still being read in.
    [[nodiscard]] bool Loading() const { return m_loadPos >= 0; }

    // --- What the Edit menu offers -----------------------------------------------------------
    // Moves to the start of a line (from 1; beyond the ends to the first or last line).
    void GoToLine(int line);
    // Selects the next occurrence after the cursor, from the top again past the end; false
    // (with the beep) when there is none.
    bool FindNext(const QString& text, bool matchCase);
    // Replaces the selection when it is the text sought, then finds the next one.
    bool ReplaceNext(const QString& text, const QString& replacement, bool matchCase);
    // Replaces every occurrence, as one step for undo; the count replaced.
    int ReplaceAll(const QString& text, const QString& replacement, bool matchCase);
    // "Ln 12, Col 5" of the cursor, as the status bar shows it.
    [[nodiscard]] QString Position() const;

    // Opens the file in a window of its own, owned by owner (the main window), as a started
    // program that runs while the window is open, for callers that wait for their editor.
    // keepOld is called with the file just before a save replaces it (the history keeps it).
    [[nodiscard]] static std::unique_ptr<StartedProgram>
    Open(FileSystem& files, MessageService& messages, const QString& file, QWidget& owner,
         const MachineFrame& machine = {}, std::function<void(const QString&)> keepOld = {});
    // What a save calls with the file just before it replaces it.
    void KeepOldTextWith(std::function<void(const QString&)> keepOld) { m_keepOld = std::move(keepOld); }

    // --- The drawing pane ------------------------------------------------------------------
    void ShowDrawing(bool shown);
    [[nodiscard]] bool DrawingShown() const;
    [[nodiscard]] ProgramView& Drawing() { return *m_view; }

Q_SIGNALS:
    // The whole file is in the window.
    void LoadFinished();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void BuildMenus();
    void BuildFindBar();
    void ShowFindBar(bool replace);
    void AskGoToLine();
    // Reads the next piece of the file into the window; the rest follows from the event loop.
    void LoadPiece();
    void ShowPosition();
    // The text as the file would hold it.
    [[nodiscard]] QByteArray TextBytes() const;
    // Reads the drawing anew: from the file while the text is as read, else from the text.
    void ReadDrawing();

    FileSystem& m_files;
    MessageService& m_messages;
    std::function<void(const QString&)> m_keepOld;
    QString m_file;
    QPlainTextEdit* m_text;
    QSplitter* m_split = nullptr;
    ProgramView* m_view = nullptr;
    QAction* m_drawingAction = nullptr;
    QTimer* m_drawingTimer = nullptr;
    bool m_drawingStale = true;
    NcHighlighter* m_highlighter = nullptr;
    QLabel* m_position = nullptr;
    QWidget* m_findBar = nullptr;
    QLineEdit* m_findBox = nullptr;
    QLineEdit* m_replaceBox = nullptr;
    QWidget* m_replaceRow = nullptr;
    QCheckBox* m_matchCase = nullptr;
    QTimer* m_loadTimer = nullptr;
    QByteArray m_bytes;
    qsizetype m_loadPos = -1; // where reading goes on; -1 when the whole file is in
    int m_loadedLines = 0;
};

} // namespace kestrova
