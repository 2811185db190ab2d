#pragma once

#include <QChar>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>
#include <optional>

namespace kestrova {

enum class DriveKind { Fixed, Removable };

struct DriveMapping {
    QChar letter; // upper case, 'A'..'Z'
    DriveKind kind = DriveKind::Fixed;
    QString hostRoot; // absolute host directory, without a trailing separator (except "/")
};

// The device map "Devices.cfg" beside "Kestrova.cfg": which host directory each drive letter
// stands for, and which host device each serial port number is. One device per line:
//     C: fixed drive_c
//     A: removable /media/floppy
//     COM1 port /dev/ttyUSB0
//     ******
// A line that does not parse is skipped with a warning; the map never fails to load.
class DeviceMap {
public:
    // The map with only the defaults: Z: is the host root, port n is /dev/ttyS(n-1).
    DeviceMap();

    // Reads "Devices.cfg" (any letter case) in the host start directory; without it, the defaults.
    [[nodiscard]] static DeviceMap Load(const QString& startHostDir);
    // Parses the text of a device map; relative host paths are taken relative to baseHostDir.
    [[nodiscard]] static DeviceMap Parse(const QByteArray& text, const QString& baseHostDir,
                                         const QString& sourceName = QStringLiteral("Devices.cfg"));

    [[nodiscard]] std::optional<DriveMapping> Drive(QChar letter) const;
    // Every mapped drive, in letter order.
    [[nodiscard]] QList<DriveMapping> Drives() const;
    // The host device of serial port n (COMn).
    [[nodiscard]] QString PortDevice(int port) const;

    // Lines that were skipped, each naming the file, the line number and the reason.
    [[nodiscard]] const QStringList& Warnings() const { return m_warnings; }

    void SetDrive(QChar letter, DriveKind kind, const QString& hostRoot);
    void SetPort(int port, const QString& device);

private:
    QMap<QChar, DriveMapping> m_drives;
    QMap<int, QString> m_ports;
    QStringList m_warnings;
};

} // namespace kestrova
