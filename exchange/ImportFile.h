#pragma once

#include "Frontend/Session.h"

#include <QString>

namespace kestrova {

// What one selected file brings in, by its extension in lower case.
enum class ImportClass {
    Drawing,        // "drw": the drawing family
    Program,        // "prg": the program with its ".inf", ".rpt" and ".stp"
    SingleFile,     // "dxf", "bmp", "usr", "inf", ...: the file itself
    ForeignProgram, // anything else: stored as a program, its whole name + ".prg"
};
[[nodiscard]] ImportClass ClassOfImport(const QString& fileName);

// Imports one file of sourceDir into targetDir (both end in "\"). An existing target asks
// "Overwrite It ?"; the result is 0 when declined, otherwise 1. A file is never imported onto
// itself (0).
[[nodiscard]] int ImportFile(Session& session, const QString& sourceDir, const QString& targetDir,
                             const QString& fileName);

} // namespace kestrova
