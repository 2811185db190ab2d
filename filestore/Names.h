#pragma once

#include "Frontend/GlobalSettings.h"
#include "platform/FileSystem.h"

#include <QString>
#include <optional>

namespace kestrova {

// The full path of a data directory, ending in "\": `RootPath` + machine directory + "\" +
// name + "\"; a name holding a colon names a drive, whose root is returned ("A:" gives "A:\").
[[nodiscard]] QString PathJoin(const GlobalSettings& g, const QString& machineDir, const QString& name);

// False for an empty name and for a drive that is not mapped or not ready.
[[nodiscard]] bool DriveExists(const FileSystem& files, const QString& name);

// Everything before the last "." ("a.b.drw" gives "a.b"), trimmed; a name without "." as it is.
[[nodiscard]] QString StripExtension(const QString& name);

// The extension after the last "." among the last three characters, never the first one:
// "part.lkp" gives "lkp", "a.b" gives "b", but "page.html" and ".x" give "". Callers rely on
// this three-character window.
[[nodiscard]] QString GetExtension(const QString& name);

// The characters after the last "/", "\" or ":"; the whole path when there is none.
[[nodiscard]] QString LastComponent(const QString& path);

// Whether a name joined to a directory names something inside it: not empty, none of "\", "/",
// ":" or a control character, and neither "." nor "..".
[[nodiscard]] bool StaysInDirectory(const QString& name);

// The path of name + "." + extension (the extension may be empty: then name alone) inside the
// directory (a path ending in "\"); nothing when the name would leave the directory. Every store
// that files a program or drawing under a name it was given goes through this, so that whatever
// a form or a line let through, nothing lands outside the directory the operator chose.
[[nodiscard]] std::optional<QString> FileInDirectory(const QString& directory, const QString& name,
                                                     const QString& extension);

// Whether a name that arrived from outside the program (a received header, a floppy index
// entry) may be used as a file or directory name: 1 to 32 characters, none of "\", "/", ":" or
// a control character, and neither "." nor "..". Anything else could place a file outside the
// data directories.
[[nodiscard]] bool AcceptableOutsideName(const QString& name);

// A new file or directory name typed by the operator: 1 to 32 characters after trimming, and nothing that
// could leave the directory or act as a pattern (no "\", "/", ":", "*", "?", control character,
// and neither "." nor "..").
[[nodiscard]] bool AcceptableNewName(const QString& name);

// A number as text, without the blank in front of positive numbers.
[[nodiscard]] QString NumberText(long long number);

} // namespace kestrova
