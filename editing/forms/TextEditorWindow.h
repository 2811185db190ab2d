#pragma once

#include "platform/FileSystem.h"
#include "platform/MessageService.h"
#include "platform/ProgramLauncher.h"

#include <QByteArray>
#include <QMainWindow>
#include <memory>

class QPlainTextEdit;

namespace kestrova {

// The system's own text editor: serves for "Notepad.exe" and for any editor that cannot start on
// this host. It edits one settings or program file as single-byte text shown in Windows-1252.
// Saving writes the lines with CR LF; a file saved without a change is left byte for byte as it
// was. The window deletes itself when closed and never ends the program by closing.
class TextEditorWindow : public QMainWindow {
    Q_OBJECT
public:
    // Opens a file (a system path); a file that cannot be read is reported and the window stays empty.
    TextEditorWindow(FileSystem& files, MessageService& messages, const QString& file,
                     QWidget* parent = nullptr);

    // Writes the file when the text was changed; false when the write failed (reported).
    bool Save();
    [[nodiscard]] QString Text() const;
    // Replaces the whole text as the operator would, marking it changed.
    void SetText(const QString& text);
    [[nodiscard]] bool Modified() const;

    // Opens the file in a window of its own, owned by owner (the main window), as a started
    // program that runs while the window is open, for callers that wait for their editor.
    [[nodiscard]] static std::unique_ptr<StartedProgram> Open(FileSystem& files, MessageService& messages,
                                                              const QString& file, QWidget& owner);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    FileSystem& m_files;
    MessageService& m_messages;
    QString m_file;
    QPlainTextEdit* m_text;
};

} // namespace kestrova
