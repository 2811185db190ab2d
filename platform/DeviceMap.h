#pragma once

#include "platform/NetAddress.h"

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

// What a serial port of the map is: a host device, or a serial device server on the network
// reached as a raw TCP connection or through Telnet with the COM port option (RFC 2217).
enum class PortKind { Device, Tcp, Rfc2217 };

struct PortMapping {
    PortKind kind = PortKind::Device;
    QString device;     // the host device, for PortKind::Device
    NetAddress address; // the device server, for the network kinds
};

// The device map "Devices.cfg" beside "Kestrova.cfg": which host directory each drive letter
// stands for, and which host device each serial port number is. One device per line:
//     C: fixed drive_c
//     A: removable /media/floppy
//     COM1 port /dev/ttyUSB0
//     COM5 tcp shop-ds1:4001
//     COM6 rfc2217 [fe80::2]:2217
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
    // The host device of serial port n (COMn); empty for a port on the network.
    [[nodiscard]] QString PortDevice(int port) const;
    // What serial port n is.
    [[nodiscard]] PortMapping Port(int port) const;
    // Where a port on the network is, as messages and the transfer log name it ("shop-ds1:4001");
    // empty for a host device.
    [[nodiscard]] QString PortHost(int port) const;

    // Lines that were skipped, each naming the file, the line number and the reason.
    [[nodiscard]] const QStringList& Warnings() const { return m_warnings; }

    void SetDrive(QChar letter, DriveKind kind, const QString& hostRoot);
    void SetPort(int port, const QString& device);
    void SetNetworkPort(int port, PortKind kind, const NetAddress& address);

private:
    QMap<QChar, DriveMapping> m_drives;
    QMap<int, PortMapping> m_ports;
    QStringList m_warnings;
};

} // namespace kestrova
