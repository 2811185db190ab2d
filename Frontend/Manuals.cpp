#include "Frontend/Manuals.h"

namespace kestrova {

void OpenManual(Session& session, ProgramLauncher& launcher) {
    const GlobalSettings& g = session.settings;
    FileSystem& files = session.files;
    if (g.AcrobatPath.isEmpty() || !files.IsFile(g.AcrobatPath)) {
        session.messages.Refuse(QStringLiteral("Adobe Acrobat Has Not Been Found !"));
        return;
    }
    const QString manual = g.ManualsPath + QStringLiteral("Frontend.pdf");
    if (g.ManualsPath.isEmpty() || !files.IsFile(manual)) {
        session.messages.Refuse(QStringLiteral("Kestrova Manual is Unavailable !"));
        return;
    }
    // The manual stays open beside the front end; nothing waits for the reader.
    (void)launcher.StartDetached(g.AcrobatPath, {manual});
}

} // namespace kestrova
