#pragma once

#include <QFile>
#include <QString>
#include <filesystem>

namespace kestrova::host {

// Conversions between Qt text and host path objects; only the platform layer uses them.
inline std::filesystem::path ToFs(const QString& hostPath) {
#ifdef _WIN32
    return std::filesystem::path(hostPath.toStdWString());
#else
    return std::filesystem::path(QFile::encodeName(hostPath).toStdString());
#endif
}

inline QString FromFs(const std::filesystem::path& path) {
#ifdef _WIN32
    return QString::fromStdWString(path.wstring());
#else
    return QFile::decodeName(QByteArray::fromStdString(path.string()));
#endif
}

} // namespace kestrova::host
