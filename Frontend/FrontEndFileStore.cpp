// The File menu's file store entries: the machine, the data directories, the file name search,
// the file actions and the drawing restore.
#include "Frontend/FrontEnd.h"
#include "filestore/DrawingRestore.h"
#include "filestore/LastFile.h"
#include "filestore/MachineSelection.h"
#include "filestore/SelectDirectory.h"
#include "filestore/forms/DirectoryForm.h"
#include "filestore/forms/FileForm.h"
#include "filestore/forms/MachineForm.h"
#include "filestore/forms/RestoreForm.h"
#include "filestore/forms/SearchForm.h"

namespace kestrova {

void FrontEnd::SelectMachineEntry() {
    InFrame([&] {
        MachineForm form(m_session, this);
        if (form.exec() == QDialog::Accepted)
            (void)SelectMachine(m_session, *this, form.ChosenMachine());
    });
}

void FrontEnd::DirectoryEntry(int action) {
    m_session.settings.DirectoryOperation = Int16::From(action);
    InFrame([&] {
        DirectoryForm form(m_session, this);
        form.exec();
    });
    ShowStatus();
}

void FrontEnd::SearchEntry() {
    InFrame([&] {
        if (!PickFileBySearch(m_session, this, 3))
            return;
        const SearchResultRecord found = m_session.settings.SearchResult;
        if (found.directory.compare(m_session.settings.CurrentDir, Qt::CaseInsensitive) != 0)
            SelectDirectory(m_session, found.directory);
        RememberLastFile(m_session, found.directory, found.name);
    });
    ShowStatus();
}

void FrontEnd::FileEntry(int action) {
    m_session.settings.FileOperation = Int16::From(action);
    InFrame([&] {
        FileForm form(m_session, this);
        form.exec();
    });
    ShowStatus();
}

void FrontEnd::RestoreEntry() {
    InFrame([&] {
        if (!RestorableDrawing(m_session)) {
            m_session.messages.Refuse(QStringLiteral("No Restorable Drawing Available !"));
            return;
        }
        RestoreForm form(m_session, this);
        form.exec();
    });
    ShowStatus();
}

} // namespace kestrova
