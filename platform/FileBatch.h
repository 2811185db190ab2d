#pragma once

#include "platform/FileSystem.h"

namespace kestrova {

// One operation on many files: an export of a thousand programs, a floppy filled at once. Within
// it a file made under a new name is not forced to the disk by itself, which costs a wait on the
// disk for every file, but with all the others at the end; nothing it was made from is gone
// before then (a delete or rename forces them first, as always). A file that replaces an old one
// is still on the disk before it takes the old one's place. Directories are read once each.
class FileBatch {
public:
    explicit FileBatch(FileSystem& files) : m_files(files) { m_files.BeginBatch(); }
    // Forces what Finish() did not, quietly: an error is on its way out already.
    ~FileBatch();
    FileBatch(const FileBatch&) = delete;
    FileBatch& operator=(const FileBatch&) = delete;

    // Forces every new file to the disk; the first that cannot be raises the error naming it.
    void Finish();

private:
    FileSystem& m_files;
    bool m_open = true;
};

} // namespace kestrova
