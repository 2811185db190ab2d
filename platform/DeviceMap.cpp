#include "platform/DeviceMap.h"

#include "platform/Blanks.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cstdio>

namespace kestrova {

namespace {

QString CleanHostRoot(const QString& hostPath, const QString& baseHostDir) {
    const QString absolute = QDir::isAbsolutePath(hostPath) ? hostPath : QDir(baseHostDir).filePath(hostPath);
    return QDir::cleanPath(absolute);
}

} // namespace

DeviceMap::DeviceMap() {
#ifdef _WIN32
    for (char c = 'A'; c <= 'Z'; ++c)
        m_drives.insert(QChar(c),
                        DriveMapping{QChar(c), DriveKind::Fixed, QStringLiteral("%1:/").arg(QChar(c))});
#else
    m_drives.insert(QChar('Z'), DriveMapping{QChar('Z'), DriveKind::Fixed, QStringLiteral("/")});
#endif
}

DeviceMap DeviceMap::Load(const QString& startHostDir) {
    const QDir dir(startHostDir);
    QString file = dir.filePath(QStringLiteral("Devices.cfg"));
    if (!QFileInfo::exists(file)) {
        const QStringList found = dir.entryList({QStringLiteral("devices.cfg")}, QDir::Files, QDir::Name);
        if (found.isEmpty())
            return DeviceMap();
        file = dir.filePath(found.first());
    }
    QFile f(file);
    if (!f.open(QIODevice::ReadOnly)) {
        DeviceMap map;
        map.m_warnings << QStringLiteral("%1: cannot be read (%2); using the default devices")
                              .arg(file, f.errorString());
        std::fprintf(stderr, "kestrova: %s\n", qPrintable(map.m_warnings.last()));
        return map;
    }
    return Parse(f.readAll(), startHostDir, file);
}

namespace {

// The letter of a drive written as a letter and a colon ("C:"), nothing for anything else.
std::optional<QChar> DriveLetterOf(const QString& device) {
    if (device.size() != 2 || device.at(1) != u':')
        return std::nullopt;
    const char16_t c = device.at(0).unicode();
    if ((c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z'))
        return device.at(0);
    return std::nullopt;
}

// The number of a port written as COM and 1 to 999 without leading zeros, any letter case; 0 for
// anything else.
int PortNumberOf(const QString& device) {
    if (device.size() < 4 || device.size() > 6 ||
        !device.startsWith(QLatin1String("com"), Qt::CaseInsensitive))
        return 0;
    int number = 0;
    for (qsizetype i = 3; i < device.size(); ++i) {
        const char16_t c = device.at(i).unicode();
        if (c < u'0' || c > u'9' || (i == 3 && c == u'0'))
            return 0;
        number = number * 10 + (c - u'0');
    }
    return number;
}

} // namespace

DeviceMap DeviceMap::Parse(const QByteArray& text, const QString& baseHostDir, const QString& sourceName) {
    DeviceMap map;
    // Lines end in CR LF, LF or CR alike.
    QString all = QString::fromLocal8Bit(text);
    all.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(u'\r', u'\n');
    const QStringList lines = all.split(u'\n');
    int number = 0;
    for (const QString& raw : lines) {
        ++number;
        const QString line = TrimBlanks(raw);
        if (line == QLatin1String("******"))
            break;
        if (line.isEmpty())
            continue;
        const auto warn = [&](const QString& reason) {
            map.m_warnings
                << QStringLiteral("%1, line %2: %3: \"%4\"").arg(sourceName).arg(number).arg(reason, line);
            std::fprintf(stderr, "kestrova: %s (line skipped)\n", qPrintable(map.m_warnings.last()));
        };
        const QStringList words = line.simplified().split(u' ');
        if (words.size() < 3) {
            warn(QStringLiteral("expected a device, a kind and a host path"));
            continue;
        }
        const QString device = words.at(0);
        const QString kind = words.at(1).toLower();
        // The host path is the rest of the line, which may itself hold blanks.
        const qsizetype kindEnd = line.indexOf(words.at(1), device.size()) + words.at(1).size();
        const QString hostPath = TrimBlanks(line.mid(kindEnd));
        if (const std::optional<QChar> drive = DriveLetterOf(device)) {
            if (kind != QLatin1String("fixed") && kind != QLatin1String("removable")) {
                warn(QStringLiteral("a drive is \"fixed\" or \"removable\""));
                continue;
            }
            map.SetDrive(*drive, kind == QLatin1String("fixed") ? DriveKind::Fixed : DriveKind::Removable,
                         CleanHostRoot(hostPath, baseHostDir));
        } else if (const int port = PortNumberOf(device); port > 0) {
            if (kind == QLatin1String("port")) {
                map.SetPort(port, CleanHostRoot(hostPath, baseHostDir));
                continue;
            }
            const bool tcp = kind == QLatin1String("tcp");
            if (!tcp && kind != QLatin1String("rfc2217")) {
                warn(QStringLiteral("a serial port is of the kind \"port\", \"tcp\" or \"rfc2217\""));
                continue;
            }
            const std::optional<NetAddress> address = ParseNetAddress(hostPath);
            if (!address) {
                warn(QStringLiteral("expected a device server as HOST:PORT"));
                continue;
            }
            map.SetNetworkPort(port, tcp ? PortKind::Tcp : PortKind::Rfc2217, *address);
        } else {
            warn(QStringLiteral("unknown device"));
        }
    }
    return map;
}

std::optional<DriveMapping> DeviceMap::Drive(QChar letter) const {
    const auto it = m_drives.constFind(letter.toUpper());
    if (it == m_drives.constEnd())
        return std::nullopt;
    return *it;
}

QList<DriveMapping> DeviceMap::Drives() const {
    return m_drives.values();
}

PortMapping DeviceMap::Port(int port) const {
    const auto it = m_ports.constFind(port);
    if (it != m_ports.constEnd())
        return *it;
#ifdef _WIN32
    return {PortKind::Device, QStringLiteral("COM%1").arg(port), {}};
#else
    return {PortKind::Device, QStringLiteral("/dev/ttyS%1").arg(port - 1), {}};
#endif
}

QString DeviceMap::PortDevice(int port) const {
    return Port(port).device;
}

QString DeviceMap::PortHost(int port) const {
    const PortMapping mapping = Port(port);
    return mapping.kind == PortKind::Device ? QString() : mapping.address.Text();
}

void DeviceMap::SetDrive(QChar letter, DriveKind kind, const QString& hostRoot) {
    const QChar upper = letter.toUpper();
    m_drives.insert(upper, DriveMapping{upper, kind, hostRoot});
}

void DeviceMap::SetPort(int port, const QString& device) {
    m_ports.insert(port, {PortKind::Device, device, {}});
}

void DeviceMap::SetNetworkPort(int port, PortKind kind, const NetAddress& address) {
    m_ports.insert(port, {kind, QString(), address});
}

} // namespace kestrova
