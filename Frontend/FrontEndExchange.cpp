// The File menu's import and export entries and the Rainer submenu.
#include "Frontend/FrontEnd.h"
#include "exchange/RainerFloppy.h"
#include "exchange/forms/ExternalForm.h"
#include "exchange/forms/RainerForm.h"

namespace kestrova {

void FrontEnd::OpenExternalForm(int mode) {
    m_session.settings.ImportMode = Int16::From(mode);
    InFrame([&] {
        ExternalForm form(m_session, this);
        form.exec();
    });
    ShowStatus();
}

void FrontEnd::RainerEntry(int operation) {
    InFrame([&] {
        // Every entry first wants a floppy in the drive.
        if (!FloppyReadyForMenu(m_session))
            return;
        if (operation == 4) {
            FormatRainerFloppy(m_session);
            return;
        }
        m_session.settings.RainerOperation = Int16::From(operation);
        RainerForm form(m_session, this);
        form.exec();
    });
    ShowStatus();
}

} // namespace kestrova
