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
