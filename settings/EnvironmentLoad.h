#pragma once

#include "Frontend/Session.h"

#include <QStringList>

namespace kestrova {

// The environment load: "Kestrova.cfg", the installed packages, the machine and reverse lists,
// the first-run copy of the delivered data files, the suite's directories, the logo, the PDF
// reader and the manuals. pdfSearchDirs stands in for the host's search path (tests).
void LoadEnvironment(Session& session, const QStringList& pdfSearchDirs = {});

} // namespace kestrova
