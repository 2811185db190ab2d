#include "platform/DirectoryListings.h"

#include <algorithm>
#ifndef _WIN32
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#endif

namespace kestrova {

namespace fs = std::filesystem;

namespace {

// One spelling per directory, whichever way its path was put together.
std::string Key(std::string dir) {
    while (dir.size() > 1 && dir.back() == '/')
        dir.pop_back();
    return dir;
}

} // namespace

bool ReadDirectoryEntries(const std::string& dir, std::vector<DirectoryListings::Entry>& entries) {
    entries.clear();
#ifndef _WIN32
    // Straight from the directory stream: data directories hold thousands of programs.
    DIR* stream = ::opendir(dir.c_str());
    if (!stream)
        return false;
    const int dirFd = ::dirfd(stream);
    while (const dirent* entry = ::readdir(stream)) {
        const char* name = entry->d_name;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
            continue;
        bool isDir = entry->d_type == DT_DIR;
        if (entry->d_type == DT_UNKNOWN || entry->d_type == DT_LNK) {
            struct stat info {};
            isDir = ::fstatat(dirFd, name, &info, 0) == 0 && S_ISDIR(info.st_mode);
        }
        entries.push_back({std::string(name), isDir});
    }
    ::closedir(stream);
    return true;
#else
    std::error_code ec;
    fs::directory_iterator it(dir, ec);
    if (ec)
        return false;
    for (const fs::directory_iterator end; it != end; it.increment(ec)) {
        if (ec)
            break;
        std::error_code typeError;
        entries.push_back({it->path().filename().string(), it->is_directory(typeError)});
    }
    return true;
#endif
}

#ifndef _WIN32

const std::vector<DirectoryListings::Entry>* DirectoryListings::Of(const std::string& dir) {
    const std::string key = Key(dir);
    FileStamp now;
    if (!ReadFileStamp(key, now)) {
        m_dirs.erase(key);
        return nullptr;
    }
    const auto found = m_dirs.find(key);
    if (found != m_dirs.end() && found->second.stamp == now)
        return &found->second.entries;
    // Stamped before it is read: a change while it is read shows at the next look.
    Listing& listing = m_dirs[key];
    listing.stamp = now;
    if (!ReadDirectoryEntries(key, listing.entries)) {
        m_dirs.erase(key);
        return nullptr;
    }
    return &listing.entries;
}

void DirectoryListings::Changed(const fs::path& hostPath) {
    if (m_dirs.empty())
        return;
    const auto found = m_dirs.find(Key(hostPath.parent_path().string()));
    if (found == m_dirs.end())
        return;
    Listing& listing = found->second;
    const std::string name = hostPath.filename().string();
    struct stat info {};
    const bool exists = ::lstat(hostPath.c_str(), &info) == 0;
    // A link counts as what it points at, as the listing read it.
    const bool isDir =
        exists && (S_ISLNK(info.st_mode) ? ::stat(hostPath.c_str(), &info) == 0 && S_ISDIR(info.st_mode)
                                         : S_ISDIR(info.st_mode));
    const auto entry = std::find_if(listing.entries.begin(), listing.entries.end(),
                                    [&](const Entry& e) { return e.name == name; });
    if (!exists && entry != listing.entries.end())
        listing.entries.erase(entry);
    else if (exists && entry == listing.entries.end())
        listing.entries.push_back({name, isDir});
    else if (exists)
        entry->isDirectory = isDir;
    if (!ReadFileStamp(found->first, listing.stamp))
        m_dirs.erase(found);
}

#else

const std::vector<DirectoryListings::Entry>* DirectoryListings::Of(const std::string&) {
    return nullptr;
}

void DirectoryListings::Changed(const fs::path&) {}

#endif

} // namespace kestrova
