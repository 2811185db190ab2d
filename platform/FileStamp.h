#pragma once

#include <cstdint>
#include <string>

namespace kestrova {

// What tells whether a file or directory is still the one that was read: which it is, its size
// and its time of change. Whoever keeps what a file said reads it again when its stamp differs.
struct FileStamp {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t seconds = 0;
    std::int64_t nanoseconds = 0;
    bool operator==(const FileStamp&) const = default;
};

// The stamp of the entry at hostPath; false where it is missing or the host keeps no such times.
[[nodiscard]] bool ReadFileStamp(const std::string& hostPath, FileStamp& stamp);

} // namespace kestrova
