#pragma once

#include "platform/DiskWrites.h"
#include "platform/FileSystem.h"

#include <QByteArray>
#include <cstdio>
#include <filesystem>
#include <memory>

namespace kestrova {

// The new text of a file that is written whole (a rewrite, a copy). The text goes to a hidden
// sibling of the file that really holds the old text (a link is followed to it) and is renamed
// over it by Commit(): at every moment the file's name holds the old text or the complete new
// one, and a link stays a link that points at the new text. The new text is flushed to the disk
// before the rename and, where there is an old text, given the old file's mode (and owner, where
// the host allows). A failure at any step throws the error naming the file and leaves the old text
// as it was; the sibling is removed unless committed.
class FileReplacement {
public:
    FileReplacement(FileSystem& files, const FileSystem::Resolved& target);
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    void Write(const char* data, std::size_t size);
    void Write(const QByteArray& bytes) { Write(bytes.constData(), std::size_t(bytes.size())); }
    // The rest of an open file (source names it in errors), copied by the host itself where it
    // can, without passing through this program.
    void CopyFrom(int sourceFd, const FileSystem::Resolved& source);
    void Commit();
    [[nodiscard]] bool Open() const { return m_file != nullptr; }
    // Gives up: the old text stays, the sibling goes.
    void Abandon() noexcept;

private:
    [[noreturn]] void Fail(int error);
    void Wrote(std::size_t size);
    struct Closer {
        void operator()(std::FILE* f) const noexcept;
    };
    FileSystem& m_files;
    FileSystem::Resolved m_target;
    std::filesystem::path m_real;    // the file that holds the text, links followed
    std::filesystem::path m_sibling; // the new text until it is put in place
    std::unique_ptr<std::FILE, Closer> m_file;
    std::int64_t m_written = 0;
    WriteBackPacer m_pacer;
};

// A complete new text already in a file of its own (newText) takes the place of the file target
// stands for, as Commit() puts its sibling in place: with the old file's mode, on the disk, then
// renamed over the real file, so a link stays a link. A failure throws the error naming the file
// and leaves both as they were. False, with nothing done, where the two lie on different devices
// (or target is gone) and one cannot be renamed onto the other.
[[nodiscard]] bool MoveIntoPlace(FileSystem& files, const FileSystem::Resolved& newText,
                                 const FileSystem::Resolved& target);

} // namespace kestrova
