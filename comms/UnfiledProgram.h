#pragma once

#include "platform/FileSystem.h"

#include <QString>

namespace kestrova {

// The first "Unfiled N.prg" of the directory (a path ending in "\") that nothing uses yet.
[[nodiscard]] QString FreeUnfiledName(const FileSystem& files, const QString& directory);

// A received program that could not be stored where it was meant to go is kept under a name of
// its own, so that no later receive can replace it: the first free "Unfiled N.prg" in the
// directory (a path ending in "\"). It is renamed there, which a full disk cannot stop, or
// copied where the rename fails. Returns the path that holds the program afterwards: the new
// name, or `from` itself when neither could be done; then `failure` says why.
[[nodiscard]] QString KeepUnfiled(FileSystem& files, const QString& directory, const QString& from,
                                  QString& failure);

// The message of a received program kept that way: why it was not filed, where it is kept and,
// where it could not be moved out of its file, why not.
[[nodiscard]] QString KeptUnfiledText(const QString& reason, const QString& kept, const QString& failure);

} // namespace kestrova
