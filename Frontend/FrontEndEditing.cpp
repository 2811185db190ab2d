// The Edit menu: every entry opens the edit form with its operation code, but the last, which
// opens the program history.
#include "Frontend/FrontEnd.h"
#include "editing/forms/EditForm.h"
#include "editing/forms/HistoryForm.h"
#include "filestore/LastFile.h"

namespace kestrova {

void FrontEnd::OpenEditForm(int operation) {
    m_session.settings.EditOperation = Int16::From(operation);
    InFrame([&] {
        EditForm form(m_session, m_launcher, this);
        if (form.Loaded())
            form.exec();
    });
    // The form may have made another data directory current.
    ShowStatus();
}

void FrontEnd::OpenHistoryForm() {
    InFrame([&] {
        // The file worked with last is the one whose history is most likely wanted.
        HistoryForm form(m_session, LastFileHere(m_session), this);
        form.exec();
    });
}

} // namespace kestrova
