#pragma once

#include "Frontend/GlobalSettings.h"
#include "platform/FileSystem.h"

#include <QString>

namespace kestrova {

// The output formats of an export, as the form's options number them.
enum class ExportFormat { Normal = 0, Lookup = 1, EightCharacter = 2 };

// What the export form last used, kept per machine in the data file stem + "xpt": the format,
// the program extension, the kinds (1 drawings, 2 programs, 3 both), the list in use (1 the
// single-file list) and the target directory, then "******".
struct ExportSettings {
    ExportFormat format = ExportFormat::Normal;
    QString extension = QStringLiteral("prg");
    int mode = 2;
    int list = 2;
    QString target;
};

// The machine's export settings; a missing file or a line that does not read gives the usual
// choice for that line, so that the form always opens.
[[nodiscard]] ExportSettings ReadExportSettings(const FileSystem& files, const GlobalSettings& g);
// Rewrites the machine's export settings whole.
void WriteExportSettings(FileSystem& files, const GlobalSettings& g, const ExportSettings& settings);

} // namespace kestrova
