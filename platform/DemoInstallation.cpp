#include "platform/DemoInstallation.h"

#include "platform/Errors.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

namespace kestrova {

namespace {

void MakePath(const QString& hostDir) {
    if (!QDir().mkpath(hostDir))
        throw PathFileAccessError(hostDir, QStringLiteral("the directory cannot be made"));
}

void CopyFileKeeping(const QString& from, const QString& to) {
    if (QFileInfo::exists(to))
        return;
    if (!QFile::copy(from, to))
        throw PathFileAccessError(to, QStringLiteral("cannot be copied from \"%1\"").arg(from));
}

QString FirstExisting(const QStringList& candidates) {
    for (const QString& candidate : candidates)
        if (QFileInfo::exists(candidate))
            return QDir::cleanPath(candidate);
    return {};
}

} // namespace

bool HoldsInstallation(const QString& hostDir) {
    const QDir dir(hostDir);
    return dir.exists() && !dir.entryList({QStringLiteral("Kestrova.cfg")}, QDir::Files).isEmpty();
}

QString DeliveredDemoDirectory() {
    const QString here = QCoreApplication::applicationDirPath();
    return FirstExisting({here + QStringLiteral("/../share/kestrova/demo"),
#ifdef KESTROVA_SOURCE_DIR
                          QStringLiteral(KESTROVA_SOURCE_DIR "/demo")
#endif
    });
}

QString DeliveredStandIn() {
    const QString here = QCoreApplication::applicationDirPath();
    return FirstExisting({here + QStringLiteral("/kestrova-standin"),
                          here + QStringLiteral("/../lib/kestrova/kestrova-standin")});
}

QString LayOutDemoInstallation(const QString& demoHostDir, const QString& standInHostPath,
                               const QString& targetHostDir) {
    const QString source = QDir(demoHostDir).absolutePath();
    const QString target = QDir(targetHostDir).absolutePath();
    if (!QFileInfo::exists(source + QStringLiteral("/c/Kestrova/Kestrova.cfg")))
        throw FileNotFoundError(source + QStringLiteral("/c/Kestrova/Kestrova.cfg"),
                                QStringLiteral("the demo installation is not there"));
    MakePath(target);
    QDirIterator it(source, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString from = it.next();
        const QString to = target + from.mid(source.size());
        if (it.fileInfo().isDir())
            MakePath(to);
        else
            CopyFileKeeping(from, to);
    }
    MakePath(target + QStringLiteral("/floppy"));
    MakePath(target + QStringLiteral("/usb"));

    const QString programDir = target + QStringLiteral("/c/Kestrova");
    // The demo's sibling packages show the stand-in's window when it lies beside their script.
    if (!standInHostPath.isEmpty()) {
        MakePath(programDir + QStringLiteral("/StandIn"));
        CopyFileKeeping(standInHostPath, programDir + QStringLiteral("/StandIn/kestrova-standin"));
    }

    const QString devices = programDir + QStringLiteral("/Devices.cfg");
    if (!QFileInfo::exists(devices)) {
        QFile f(devices);
        const QByteArray map = "C: fixed " + QFile::encodeName(target) + "/c\r\nA: removable " +
                               QFile::encodeName(target) + "/floppy\r\nE: removable " +
                               QFile::encodeName(target) + "/usb\r\n******\r\n";
        if (!f.open(QIODevice::WriteOnly) || f.write(map) != map.size() || !f.flush())
            throw PathFileAccessError(devices, f.errorString());
    }
    return programDir;
}

} // namespace kestrova
