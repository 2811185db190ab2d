// "Devices.cfg" as a person may leave it. Whatever it holds, the map loads, every drive it
// keeps has an absolute host root, and no system path on a mapped drive leads outside it.
#include "FuzzSupport.h"
#include "platform/DeviceMap.h"

#include <QDir>

using namespace kestrova;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::EnsureApplication();
    const QByteArray bytes = fuzz::Bytes(data, size);
    // The map is the text up to the first NUL; what follows is a path to look up on its drives.
    const qsizetype split = bytes.indexOf('\0');
    const QByteArray mapText = split < 0 ? bytes : bytes.left(split);
    const QString path = split < 0 ? QString() : FromBytes(bytes.mid(split + 1));

    const DeviceMap map = DeviceMap::Parse(mapText, QStringLiteral("/base"), QStringLiteral("Devices.cfg"));
    for (const QString& warning : map.Warnings())
        KESTROVA_FUZZ_CHECK(warning.startsWith(QStringLiteral("Devices.cfg, line ")));
    QChar last;
    for (const DriveMapping& drive : map.Drives()) {
        KESTROVA_FUZZ_CHECK(drive.letter >= u'A' && drive.letter <= u'Z');
        KESTROVA_FUZZ_CHECK(last.isNull() || last < drive.letter);
        last = drive.letter;
        KESTROVA_FUZZ_CHECK(QDir::isAbsolutePath(drive.hostRoot));
        KESTROVA_FUZZ_CHECK(drive.hostRoot == QDir::cleanPath(drive.hostRoot));
    }
    KESTROVA_FUZZ_CHECK(map.Drive(QChar('Z')).has_value()); // the host root stays reachable

    if (path.isEmpty())
        return 0;
    const FileSystem files(map, QStringLiteral("/nonexistent-start"));
    const QString full = files.FullPath(path);
    const QString host = files.HostPath(path);
    KESTROVA_FUZZ_CHECK(full.size() >= 3 && full.at(1) == u':' && full.at(2) == u'\\');
    const auto drive = map.Drive(full.at(0));
    if (!drive) {
        KESTROVA_FUZZ_CHECK(host.isEmpty());
        return 0;
    }
    const QString root = drive->hostRoot;
    KESTROVA_FUZZ_CHECK(host == root || host.startsWith(root.endsWith(u'/') ? root : root + u'/'));
    KESTROVA_FUZZ_CHECK(!host.split(u'/').contains(QStringLiteral("..")));
    return 0;
}
