// The Edit menu: every entry opens the edit form with its operation code.
#include "Frontend/FrontEnd.h"
#include "editing/forms/EditForm.h"

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

} // namespace kestrova
