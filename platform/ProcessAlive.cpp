#include "platform/ProcessAlive.h"

#ifndef _WIN32
#include <cerrno>
#include <csignal>
#else
#include <windows.h>
#endif

namespace kestrova {

bool ProcessAlive(long long pid) {
    if (pid <= 0)
        return false;
#ifndef _WIN32
    // Signal 0 only asks; a process of another user answers EPERM and is there all the same.
    return ::kill(pid_t(pid), 0) == 0 || errno == EPERM;
#else
    HANDLE process = ::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, DWORD(pid));
    if (process == nullptr)
        return false;
    DWORD code = 0;
    const bool running = ::GetExitCodeProcess(process, &code) && code == STILL_ACTIVE;
    ::CloseHandle(process);
    return running;
#endif
}

} // namespace kestrova
