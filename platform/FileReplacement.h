#pragma once

#include "platform/FileSystem.h"

#include <QByteArray>
#include <cstdio>
#include <filesystem>
#include <memory>

namespace kestrova {

// The new text of a file that is replaced whole (a rewrite, a copy over an existing file). The
// text goes to a hidden sibling of the file that really holds the old text (a link is followed
// to it); Commit() flushes it to the disk, gives it the old file's mode (and owner, where the
// host allows), and only then renames it over that file. A rename is whole: at every moment the
// file's name holds the old text or the complete new one, and a link stays a link that points at
// the new text. A failure at any step throws the error naming the file and leaves the old text
// as it was; the sibling is removed unless committed.
class FileReplacement {
public:
    FileReplacement(const FileSystem& files, const FileSystem::Resolved& target);
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    void Write(const char* data, std::size_t size);
    void Write(const QByteArray& bytes) { Write(bytes.constData(), std::size_t(bytes.size())); }
    void Commit();
    [[nodiscard]] bool Open() const { return m_file != nullptr; }
    // Gives up: the old text stays, the sibling goes.
    void Abandon() noexcept;

private:
    [[noreturn]] void Fail(int error);
    struct Closer {
        void operator()(std::FILE* f) const noexcept;
    };
    const FileSystem& m_files;
    FileSystem::Resolved m_target;
    std::filesystem::path m_real;    // the file that holds the text, links followed
    std::filesystem::path m_sibling; // the new text until it is put in place
    std::unique_ptr<std::FILE, Closer> m_file;
};

} // namespace kestrova
