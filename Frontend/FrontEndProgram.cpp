#include "Frontend/FrontEndProgram.h"

#include "Frontend/StartUp.h"
#include "editing/MachineFrame.h"
#include "editing/forms/TextEditorWindow.h"
#include "filestore/HistoryOperations.h"
#include "filestore/ProgramHistory.h"

#include <QDir>

namespace kestrova {

// Started in the directory that holds "Kestrova.cfg" and "Devices.cfg".
FrontEndProgram::FrontEndProgram(const QString& programHostDir)
    : m_files(FileSystem::AtStartDirectory(programHostDir.isEmpty() ? QDir::currentPath() : programHostDir)),
      m_session{m_settings, m_files, m_messages}, m_launcher(m_files) {}

FrontEndProgram::~FrontEndProgram() = default;

int FrontEndProgram::Open() {
    m_window = std::make_unique<FrontEnd>(m_session, m_launcher, nullptr, nullptr,
                                          [this](FrontEnd&) { return LoadAtStartUp(m_session); });
    if (const int status = m_window->StartUpStatus(); status != 0)
        return status;
    m_launcher.SetBuiltInEditor([this](const QString& file) {
        return TextEditorWindow::Open(
            m_files, m_messages, file, *m_window, ReadMachineFrame(m_session, m_settings.MachineDir),
            [this](const QString& saved) { KeepPreviousVersion(m_session, saved, SavedInEditor); });
    });
    m_messages.SetParent(m_window.get());
    return 0;
}

} // namespace kestrova
