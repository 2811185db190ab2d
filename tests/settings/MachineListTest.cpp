#include "settings/MachineList.h"

#include "InstallationFixture.h"
#include "Thrown.h"
#include "settings/ListRecordReader.h"

#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::InstallationFixture;
using kestrova::testing::ThrownText;

namespace {

MachineList ReadList(InstallationFixture& fx, const QByteArray& text) {
    fx.Write(QStringLiteral("C:\\Kestrova\\Machine.lst"), text);
    return ReadMachineList(fx.Files(), QStringLiteral("C:\\Kestrova\\Machine.lst"));
}

} // namespace

TEST(MachineList, ReadsQuotedAndPlainItemsAcrossCommasAndLineEnds) {
    InstallationFixture fx;
    const MachineList list = ReadList(fx, "1, \"Punch, Large\" ,PUNCH1 , \"Setman\",\"\"\r\n"
                                          "2,Laser 3030,\n"
                                          "LASER,Setman\r"
                                          "3,\"Rainer\"junk,RAINER,Setman,\"R,1\"\r\n"
                                          "******\r\n"
                                          "4,\"After the end\",A,B,C\r\n");
    ASSERT_EQ(list.count, 3);
    ASSERT_EQ(list.table.size(), 4);
    EXPECT_EQ(list.table[0].number, 3) << "element 0 holds the count";
    EXPECT_EQ(list.table[1].field1, QStringLiteral("Punch, Large"));
    EXPECT_EQ(list.table[1].field2, QStringLiteral("PUNCH1"));
    EXPECT_EQ(list.table[1].field4, QString());
    EXPECT_EQ(list.table[2].field1, QStringLiteral("Laser 3030"));
    EXPECT_EQ(list.table[2].field2, QString()) << "a comma before the line end leaves an empty item";
    EXPECT_EQ(list.table[2].field3, QStringLiteral("LASER"));
    EXPECT_EQ(list.table[2].field4, QStringLiteral("Setman"));
    EXPECT_EQ(list.table[3].field1, QStringLiteral("Rainer")) << "text after a closing quote is dropped";
    EXPECT_EQ(list.table[3].field4, QStringLiteral("R,1"));
    EXPECT_TRUE(list.warnings.isEmpty());

    const MachineList odd = ReadList(fx, "1, \xa0Punch\x0b ,\tPUNCH1\t,S,F\r\n******\r\n");
    ASSERT_EQ(odd.count, 1);
    EXPECT_EQ(odd.table[1].field1, QString::fromLatin1("\xa0Punch\x0b")) << "only blanks go";
    EXPECT_EQ(odd.table[1].field2, QStringLiteral("\tPUNCH1\t"));
}

TEST(MachineList, EndsAtABlankItemAGarbageNumberOrTheEndOfTheFile) {
    InstallationFixture fx;
    EXPECT_EQ(ReadList(fx, "1,A,B,C,D\r\n2,E,F,G,H").count, 2) << "no end marker";
    EXPECT_EQ(ReadList(fx, "").count, 0);

    const MachineList blank = ReadList(fx, "1,A,B,C,D\r\n\r\n2,E,F,G,H\r\n******\r\n");
    EXPECT_EQ(blank.count, 1);
    ASSERT_EQ(blank.warnings.size(), 1);
    EXPECT_TRUE(blank.warnings.first().contains(QStringLiteral("C:\\Kestrova\\Machine.lst")));

    const MachineList garbage = ReadList(fx, "1,A,B,C,D\r\nabc,E,F,G,H\r\n3,I,J,K,L\r\n");
    EXPECT_EQ(garbage.count, 1);
    ASSERT_EQ(garbage.warnings.size(), 1);
    EXPECT_TRUE(garbage.warnings.first().contains(QStringLiteral("\"abc\"")));
    EXPECT_EQ(ReadList(fx, "0,A,B,C,D\r\n").count, 0);
    EXPECT_EQ(ReadList(fx, "2.7,A,B,C,D\r\n").table[1].number, 2);
}

TEST(MachineList, ACutOffRecordOrAnOversizedNumberNamesTheFile) {
    InstallationFixture fx;
    EXPECT_EQ(ThrownText<InputPastEndError>([&] { (void)ReadList(fx, "1,A,B,C,D\r\n2,E,F"); }),
              QStringLiteral("Input past end of file: \"C:\\Kestrova\\Machine.lst\""));
    const QString overflow = ThrownText<OverflowError>([&] { (void)ReadList(fx, "99999,A,B,C,D\r\n"); });
    EXPECT_TRUE(overflow.startsWith(QStringLiteral("Overflow: \"C:\\Kestrova\\Machine.lst\"")))
        << overflow.toStdString();
    EXPECT_THROW((void)ReadMachineList(fx.Files(), QStringLiteral("C:\\Kestrova\\Nothing.lst")),
                 FileNotFoundError);
}
