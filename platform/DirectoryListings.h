#pragma once

#include "platform/FileStamp.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <unordered_map>
#include <vector>

namespace kestrova {

// The entries of the directories that one batch of work on many files looks into (an export of
// a thousand programs asks for each new name whether it is there in another letter case, and
// lists the family of each). Each directory is read once and kept while it is unchanged (its
// identity and time of change as before) or changed only by this layer, which tells every
// change it makes. A change by another program shows at the next look, unless it falls in the
// same instant as one of this layer's own; a batch is short, and this risk is taken only within
// one. Hosts without the times and identities needed keep nothing.
class DirectoryListings {
public:
    struct Entry {
        std::string name;
        bool isDirectory = false;
    };

    // The entries of dir (host path), "." and ".." left out; nullptr where it cannot be read or
    // nothing can be kept on this host.
    [[nodiscard]] const std::vector<Entry>* Of(const std::string& dir);
    // This layer has just made, replaced or removed the entry at hostPath: the listing of its
    // directory, if one is kept, follows.
    void Changed(const std::filesystem::path& hostPath);
    // Everything forgotten (the end of a batch, a directory renamed or removed).
    void Clear() { m_dirs.clear(); }

private:
    struct Listing {
        FileStamp stamp;
        std::vector<Entry> entries;
    };
    std::unordered_map<std::string, Listing> m_dirs;
};

// Every entry of a directory as the host gives it, "." and ".." left out; false when it cannot
// be read.
bool ReadDirectoryEntries(const std::string& dir, std::vector<DirectoryListings::Entry>& entries);

} // namespace kestrova
