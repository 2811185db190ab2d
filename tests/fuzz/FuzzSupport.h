#pragma once

// What the fuzz targets share: a check that aborts (a finding for libFuzzer, a failed test in
// the replay), the input as the single-byte text the system reads, and a scratch installation
// whose drive C: is a temporary directory.

#include "platform/FileSystem.h"
#include "platform/TextFile.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QString>
#include <QTemporaryDir>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

#define KESTROVA_FUZZ_CHECK(condition)                                                                       \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            std::fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #condition);               \
            std::abort();                                                                                    \
        }                                                                                                    \
    } while (0)

namespace kestrova::fuzz {

inline QByteArray Bytes(const std::uint8_t* data, std::size_t size) {
    return QByteArray(reinterpret_cast<const char*>(data), qsizetype(size));
}

// One Qt application for the process, made on first use.
inline void EnsureApplication() {
    if (QCoreApplication::instance() == nullptr) {
        static int argc = 1;
        static char name[] = "kestrova-fuzz";
        static char* argv[] = {name, nullptr};
        static QCoreApplication app(argc, argv);
    }
}

// A drive C: in a temporary directory, the current directory at its root.
class ScratchDrive {
public:
    ScratchDrive() {
        EnsureApplication();
        if (!m_dir.isValid())
            std::abort();
        DeviceMap map;
        map.SetDrive(QChar('C'), DriveKind::Fixed, m_dir.path());
        m_files = std::make_unique<FileSystem>(map, m_dir.path());
    }
    [[nodiscard]] FileSystem& Files() { return *m_files; }
    [[nodiscard]] QString Host(const QString& name) const { return m_dir.filePath(name); }
    // Puts the bytes in C:\name, as a person's editor would have left them. The old file goes
    // first: a file truncated and written again is flushed to the disk when it is closed.
    void Put(const QString& name, const QByteArray& bytes) const {
        QFile::remove(Host(name));
        QFile f(Host(name));
        if (!f.open(QIODevice::WriteOnly) || f.write(bytes) != bytes.size())
            std::abort();
    }

private:
    QTemporaryDir m_dir;
    std::unique_ptr<FileSystem> m_files;
};

} // namespace kestrova::fuzz
