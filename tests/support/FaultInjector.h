#pragma once

#include "platform/FileSystem.h"

#include <QString>
#include <cerrno>

namespace kestrova::testing {

// Makes one step of the host file layer fail as the host would: the n-th time (from 1) the step
// meets a file whose full system path ends with the given name (any letter case; empty for
// every file), it fails with the error number given (ENOSPC a full disk, EIO a drive pulled
// out); with `lasting`, every later time too, as a full disk stays full. Removed with the
// injector.
class FaultInjector {
public:
    explicit FaultInjector(FileSystem& files) : m_files(files) {}
    ~FaultInjector() { m_files.SetFaultHook({}); }
    FaultInjector(const FaultInjector&) = delete;
    FaultInjector& operator=(const FaultInjector&) = delete;

    void Fail(FileStep step, const QString& nameEnd = {}, int error = ENOSPC, int nth = 1,
              bool lasting = false) {
        m_seen = 0;
        m_fired = 0;
        m_files.SetFaultHook([=, this](FileStep at, const QString& path) {
            if (at != step || !path.endsWith(nameEnd, Qt::CaseInsensitive))
                return 0;
            ++m_seen;
            if (m_seen == nth || (lasting && m_seen > nth)) {
                ++m_fired;
                return error;
            }
            return 0;
        });
    }
    // How often the step was met on a matching file, and how often it failed.
    [[nodiscard]] int Seen() const { return m_seen; }
    [[nodiscard]] int Fired() const { return m_fired; }

private:
    FileSystem& m_files;
    int m_seen = 0;
    int m_fired = 0;
};

} // namespace kestrova::testing
