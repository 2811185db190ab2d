#pragma once

#include "platform/FileSystem.h"

#include <QString>
#include <QStringList>

namespace kestrova {

// The folder list of the external form, as the platform's directory list shows a path: the
// drive's root, each folder down to the open one, indented a step per level, then the open
// folder's subfolders in name order. Each line carries its folder's full path, ending in "\".
struct FolderTree {
    QStringList captions;
    QStringList paths;
    int open = 0; // the line of the open folder
};

// The tree for a folder ("E:\Out\"); a folder that is not there opens its drive's root.
[[nodiscard]] FolderTree FolderTreeOf(const FileSystem& files, const QString& folder);

// The drives to choose from: every mapped drive in letter order, as "C:" or, for a removable
// drive, "A: [Removable Drive]".
[[nodiscard]] QStringList DriveChoices(const FileSystem& files);

} // namespace kestrova
