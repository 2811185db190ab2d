#pragma once

#include "Frontend/Session.h"

#include <QString>
#include <functional>

namespace kestrova {

// Asks whether to replace what is there: Q name Q " Already Exists !", two line feeds,
// "Overwrite It ?". True on Yes.
[[nodiscard]] bool AskOverwrite(Session& session, const QString& name);

// Copies the members of family `name` in sourceDir whose extension (as GetExtension gives it,
// in lower case) the filter takes, each to destinationDir + newName + "." + its extension.
void CopyMembers(Session& session, const QString& sourceDir, const QString& name,
                 const QString& destinationDir, const QString& newName,
                 const std::function<bool(const QString& extension)>& take);

// Copies sourceDir + name + extension to destinationDir + newName + extension when the source
// exists. True when copied.
bool CopyIfPresent(FileSystem& files, const QString& source, const QString& destination);

} // namespace kestrova
