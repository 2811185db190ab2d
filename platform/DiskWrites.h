#pragma once

#include <QString>
#include <cstdint>
#include <string>
#include <vector>

namespace kestrova {

class FileSystem;

// Text files this layer has written anew (a rewrite's temporary file, say) whose text may still
// be only in the host's memory. A copy is forced to the disk before it counts as stored; a text
// file written anew is not forced as it is closed, which gains time and risks nothing while the
// text it was made from is still there: a crash then loses at most the new file. What must not
// happen is that the text it came from goes first. So before this layer deletes or renames
// anything, every such file is forced to the disk (its text and its name), all of them at once.
class UnsettledFiles {
public:
    void Add(const std::string& hostPath, const QString& fullPath);
    // The file is about to go: it need not reach the disk.
    void Forget(const std::string& hostPath);
    // Forces every file to the disk; the first that cannot be forced raises the error naming it
    // (the "Sync" step of the fault hook), and it stays on the list with the rest.
    void Settle(const FileSystem& files);
    [[nodiscard]] bool Empty() const { return m_files.empty(); }

private:
    // From this many files on, their file system is flushed whole first.
    static constexpr std::size_t ManyFiles = 32;
    struct File {
        std::string host;
        QString full;
    };
    std::vector<File> m_files;
};

// Asks the host to write everything waiting for the file system that holds fd, and waits for it.
void FlushFileSystem(int fd);

// Asks the host to start writing a range of an open file to the disk and returns at once, so
// that a later force of a large file finds little left to write. Nothing on hosts without it.
void StartWriteBack(int fd, std::int64_t from, std::int64_t length);

// Starts the write-back of a file being written, every few megabytes.
class WriteBackPacer {
public:
    // written: the bytes of the file written so far, all of them handed to the host.
    void Written(int fd, std::int64_t written);
    // Whether the buffered writes should be handed to the host now to start their write-back.
    [[nodiscard]] bool Due(std::int64_t written) const { return written - m_started >= Step; }

private:
    static constexpr std::int64_t Step = std::int64_t(8) << 20;
    std::int64_t m_started = 0;
};

} // namespace kestrova
