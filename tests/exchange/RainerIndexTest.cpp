// The floppy index against bytes written out by hand from its record layout: 64-byte records,
// 60 bytes of text, 4 trailer bytes; used entries padded with blanks to 50 and ten zero bytes.
#include "exchange/RainerIndex.h"

#include <gtest/gtest.h>

using namespace kestrova;

namespace {

// "PART1" in the first variant.
constexpr char Part1V1[] = "PART1                                             "
                           "\0\0\0\0\0\0\0\0\0\0"
                           "\xDF\x01\xD7\x02";
static_assert(sizeof Part1V1 == 65);

QByteArray Record(const char (&bytes)[65]) {
    return QByteArray(bytes, 64);
}

} // namespace

TEST(RainerIndex, SlotNamesAndRecordsOfBothVariants) {
    const struct {
        int variant, slot, record;
        const char* file;
    } cases[] = {
        // clang-format off
        {1, 1, 1, "A:\\P001---.PRG"},
        {1, 7, 7, "A:\\P007---.PRG"},
        {1, 300, 300, "A:\\P300---.PRG"},
        {2, 1, 3, "A:\\P001---.PRG"},
        {2, 7, 9, "A:\\P007---.PRG"},
        {2, 298, 300, "A:\\P298---.PRG"},
        // clang-format on
    };
    for (const auto& c : cases) {
        EXPECT_EQ(SlotRecord(c.variant, c.slot), c.record) << c.variant << "/" << c.slot;
        EXPECT_EQ(SlotFileName(c.slot), QString::fromLatin1(c.file));
    }
    EXPECT_EQ(ZeroPad(1234, 3), "1234") << "a longer text is kept whole";
    EXPECT_EQ(ZeroPad(5, 1), "5");
}

TEST(RainerIndex, ReadingTellsUsedFromFreeEntries) {
    QByteArray index = FreshIndex();
    auto put = [&index](int record, const QByteArray& bytes) {
        index.replace((record - 1) * 64, 64, bytes.leftJustified(64, '\0', true));
    };
    put(2, Record(Part1V1));
    put(3, QByteArray(64, '\0'));                      // first byte 0: free
    put(4, QByteArray("     ") + QByteArray(59, ' ')); // all blanks: free
    put(5,
        QByteArray("A-LONG-NAME-OF-THIRTY-FIVE-CHARS!!") + QByteArray(29, ' ')); // 34 characters: cut at 32
    put(6, QByteArray("  lower case  ") + QByteArray(50, ' '));                  // trimmed of blanks
    put(8, QByteArray("NUL\0INSIDE", 10));                                       // kept: judged on import
    put(7, QByteArray("$PART") + QByteArray(59, ' '));                           // first "$": free

    const QList<RainerSlot> v1 = ParseRainerIndex(index, 1);
    ASSERT_EQ(v1.size(), 300);
    const struct {
        int slot;
        bool free;
        const char* name;
    } expected[] = {{1, true, ""},
                    {2, false, "PART1"},
                    {3, true, ""},
                    {4, true, ""},
                    {5, false, "A-LONG-NAME-OF-THIRTY-FIVE-CHARS"},
                    {6, false, "lower case"},
                    {7, true, ""}};
    EXPECT_EQ(v1.at(7).name, QString::fromLatin1("NUL\0INSIDE", 10) + QString(22, QChar(0)));
    for (const auto& e : expected) {
        EXPECT_EQ(v1.at(e.slot - 1).slot, e.slot);
        EXPECT_EQ(v1.at(e.slot - 1).free, e.free) << "slot " << e.slot;
        EXPECT_EQ(v1.at(e.slot - 1).name, QString::fromLatin1(e.name)) << "slot " << e.slot;
    }
    const QList<RainerSlot> v2 = ParseRainerIndex(index, 2);
    ASSERT_EQ(v2.size(), 298) << "slot k is record k + 2: a fresh index offers 298 slots";
    EXPECT_EQ(v2.at(2).name, "A-LONG-NAME-OF-THIRTY-FIVE-CHARS") << "variant 2 slot 3 is record 5";
}

TEST(RainerIndex, ShortAndOddSizedIndexesStopAtTheirLastRecord) {
    const struct {
        qsizetype bytes;
        int variant;
        qsizetype slots;
    } cases[] = {
        // clang-format off
        {0, 1, 0},
        {1, 1, 1},
        {63, 1, 1},
        {64, 1, 1},
        {65, 1, 2},
        {128, 2, 0},
        {129, 2, 1},
        {19200, 1, 300},
        {19264, 1, 300},
        {19264, 2, 299},
        {64000, 2, 300},
        // clang-format on
    };
    for (const auto& c : cases) {
        const QByteArray bytes = FreshIndex().repeated(4).left(c.bytes);
        EXPECT_EQ(ParseRainerIndex(bytes, c.variant).size(), c.slots)
            << c.bytes << " bytes, variant " << c.variant;
    }
    // A record cut short reads as if padded with zero bytes.
    const QList<RainerSlot> cut = ParseRainerIndex(QByteArray("AB"), 1);
    ASSERT_EQ(cut.size(), 1);
    EXPECT_EQ(cut.first().name, ParseRainerIndex(QByteArray("AB") + QByteArray(62, '\0'), 1).first().name);
    EXPECT_EQ(cut.first().name, QByteArray("AB") + QByteArray(30, '\0'));
}
