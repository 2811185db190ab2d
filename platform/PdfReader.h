#pragma once

#include "platform/FileSystem.h"

#include <QString>
#include <QStringList>

namespace kestrova {

// Looks for a program that shows PDF manuals and returns its system path, or "" when there is
// none. On Linux: the usual desktop viewers in the directories of the search path (searchDirs
// stands in for it where given). On Windows: "ACROBAT.EXE" or "ACRORD32.EXE" below
// "C:\Program Files\Adobe", in directories whose names hold "ACROBAT" or "READER".
[[nodiscard]] QString FindPdfReader(const FileSystem& files, const QStringList& searchDirs = {});

} // namespace kestrova
