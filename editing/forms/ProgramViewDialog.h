#pragma once

#include "editing/MachineFrame.h"
#include "platform/FileSystem.h"

#include <QDialog>

namespace kestrova {

class ProgramView;

// A program's drawing in a window of its own, to look at and not to change: the send form's
// "View". Esc or Close closes it.
class ProgramViewDialog : public QDialog {
    Q_OBJECT
public:
    ProgramViewDialog(const MachineFrame& machine, QWidget* parent = nullptr);

    // Reads the program (a system path); raises the error of a file that cannot be opened.
    void Load(const FileSystem& files, const QString& path);
    [[nodiscard]] ProgramView& View() { return *m_view; }

private:
    ProgramView* m_view;
};

} // namespace kestrova
