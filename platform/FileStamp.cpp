#include "platform/FileStamp.h"

#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace kestrova {

bool ReadFileStamp(const std::string& hostPath, FileStamp& stamp) {
#ifndef _WIN32
    struct stat info {};
    if (::stat(hostPath.c_str(), &info) != 0)
        return false;
    stamp.device = std::uint64_t(info.st_dev);
    stamp.inode = std::uint64_t(info.st_ino);
    stamp.size = std::int64_t(info.st_size);
    stamp.seconds = std::int64_t(info.st_mtim.tv_sec);
    stamp.nanoseconds = std::int64_t(info.st_mtim.tv_nsec);
    return true;
#else
    (void)hostPath;
    (void)stamp;
    return false;
#endif
}

} // namespace kestrova
