#include "platform/DeviceMap.h"

#include <gtest/gtest.h>

using namespace kestrova;

TEST(DeviceMap, ReadsDrivesAndPortsAndKeepsDefaultsForWhatItDoesNotName) {
    const DeviceMap map = DeviceMap::Parse("a: removable /media/floppy\r\n"
                                           "C: fixed drive_c\r\n"
                                           "  E:   Removable   /media/usb stick  \r\n"
                                           "com2 PORT /dev/pts/7\n"
                                           "******\n"
                                           "D: fixed /after/the/end\n",
                                           QStringLiteral("/start"));
    ASSERT_TRUE(map.Drive(u'A'));
    EXPECT_EQ(map.Drive(u'a')->kind, DriveKind::Removable);
    EXPECT_EQ(map.Drive(u'A')->hostRoot, QStringLiteral("/media/floppy"));
    // A relative host path is relative to the start directory; the rest of the line may hold blanks.
    EXPECT_EQ(map.Drive(u'C')->hostRoot, QStringLiteral("/start/drive_c"));
    EXPECT_EQ(map.Drive(u'E')->hostRoot, QStringLiteral("/media/usb stick"));
    EXPECT_FALSE(map.Drive(u'D')) << "lines after the end marker are not read";
    EXPECT_EQ(map.Drive(u'Z')->hostRoot, QStringLiteral("/"));
    EXPECT_EQ(map.PortDevice(2), QStringLiteral("/dev/pts/7"));
    EXPECT_EQ(map.PortDevice(1), QStringLiteral("/dev/ttyS0"));
    EXPECT_EQ(map.PortDevice(4), QStringLiteral("/dev/ttyS3"));

    QStringList letters;
    for (const DriveMapping& d : map.Drives())
        letters << QString(d.letter);
    EXPECT_EQ(letters, (QStringList{"A", "C", "E", "Z"}));
    EXPECT_TRUE(map.Warnings().isEmpty());
}

TEST(DeviceMap, SkipsLinesThatDoNotParseWithAWarningNamingTheLine) {
    const DeviceMap map = DeviceMap::Parse("C: fixed /c\n"
                                           "C:\n"
                                           "Q: floating /x\n"
                                           "COM1 removable /dev/ttyUSB0\n"
                                           "LPT1 port /dev/lp0\n"
                                           "COM0 port /dev/zero-port\n"
                                           "COM1 port /dev/lowest\n"
                                           "Z: fixed /z\n",
                                           QStringLiteral("/start"), QStringLiteral("/start/Devices.cfg"));
    ASSERT_EQ(map.Warnings().size(), 5);
    EXPECT_TRUE(map.Warnings().at(0).contains(QStringLiteral("/start/Devices.cfg, line 2")));
    EXPECT_TRUE(map.Warnings().at(1).contains(QStringLiteral("line 3")));
    EXPECT_FALSE(map.Drive(u'Q'));
    // COM1 is the lowest port; COM0 is no port at all.
    EXPECT_TRUE(map.Warnings().at(4).contains(QStringLiteral("COM0")));
    EXPECT_EQ(map.PortDevice(1), QStringLiteral("/dev/lowest"));
    // A drive the map names replaces its default.
    EXPECT_EQ(map.Drive(u'Z')->hostRoot, QStringLiteral("/z"));
}

TEST(DeviceMap, PortsOnTheNetworkTakeAHostAndAPortAndAMalformedOneIsSkippedAlone) {
    struct Case {
        const char* line;
        PortKind kind; // what COM5 is afterwards (Device: the line was skipped)
        const char* host;
        int port;
    };
    const Case cases[] = {
        {"COM5 tcp shop-ds1:4001", PortKind::Tcp, "shop-ds1", 4001},
        {"com5 RFC2217 10.0.0.7:2217", PortKind::Rfc2217, "10.0.0.7", 2217},
        {"COM5 rfc2217 [::1]:2217", PortKind::Rfc2217, "::1", 2217},
        {"COM5 tcp ds.shop.example:65535", PortKind::Tcp, "ds.shop.example", 65535},
        {"COM5 tcp shop-ds1", PortKind::Device, "", 0},
        {"COM5 tcp shop-ds1:", PortKind::Device, "", 0},
        {"COM5 tcp shop-ds1:0", PortKind::Device, "", 0},
        {"COM5 tcp shop-ds1:65536", PortKind::Device, "", 0},
        {"COM5 tcp shop-ds1:40x1", PortKind::Device, "", 0},
        {"COM5 tcp shop_ds1:4001", PortKind::Device, "", 0},
        {"COM5 tcp -shop:4001", PortKind::Device, "", 0},
        {"COM5 tcp 10.0.0.300:4001", PortKind::Device, "", 0},
        {"COM5 tcp 10.0.7:4001", PortKind::Device, "", 0},
        {"COM5 tcp ::1:2217", PortKind::Device, "", 0},
        {"COM5 rfc2217 [::1:2217", PortKind::Device, "", 0},
        {"COM5 rfc2217 [shop-ds1]:2217", PortKind::Device, "", 0},
        {"COM5 tcp shop-ds1:4001 extra", PortKind::Device, "", 0},
        {"COM5 telnet shop-ds1:4001", PortKind::Device, "", 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        const DeviceMap map = DeviceMap::Parse(QByteArray("COM1 port /dev/ttyUSB0\n") + c.line +
                                                   "\nCOM6 tcp 127.0.0.1:7001\n******\n",
                                               QStringLiteral("/start"));
        const PortMapping com5 = map.Port(5);
        EXPECT_EQ(com5.kind, c.kind);
        EXPECT_EQ(map.Warnings().size(), c.kind == PortKind::Device ? 1 : 0);
        if (c.kind == PortKind::Device) {
            EXPECT_TRUE(map.Warnings().first().contains(QStringLiteral("line 2")));
            EXPECT_EQ(com5.device, QStringLiteral("/dev/ttyS4")); // the default, as without the line
            EXPECT_TRUE(map.PortHost(5).isEmpty());
        } else {
            EXPECT_EQ(com5.address.host, QString::fromLatin1(c.host));
            EXPECT_EQ(com5.address.port, c.port);
            EXPECT_TRUE(com5.device.isEmpty());
        }
        // The lines around it are read as ever.
        EXPECT_EQ(map.PortDevice(1), QStringLiteral("/dev/ttyUSB0"));
        EXPECT_EQ(map.PortHost(6), QStringLiteral("127.0.0.1:7001"));
    }
    EXPECT_EQ(DeviceMap::Parse("COM6 rfc2217 [fe80::2]:2217\n", QStringLiteral("/")).PortHost(6),
              QStringLiteral("[fe80::2]:2217"));
}
