// The floppy index reader and the lookup table reader on many random, mutated and truncated
// files (seeded, so every run sees the same ones): they never fail and never read past what
// the file holds. What the import and the lookup export write from such files is held by the
// fuzz targets rainer_index and lookup_table, whose corpora hold damaged files of these kinds.
#include "exchange/LookupTable.h"
#include "exchange/RainerIndex.h"
#include "platform/Blanks.h"

#include <gtest/gtest.h>
#include <random>

using namespace kestrova;

namespace {

// Bytes of the kinds a damaged floppy or a hand-edited table holds: noise, a valid index with
// flipped bytes and planted names (some of them paths), and either one cut anywhere.
class Garbage {
public:
    explicit Garbage(unsigned seed) : m_random(seed) {}

    QByteArray Next(const QByteArray& valid) {
        QByteArray bytes;
        switch (Pick(3)) {
        case 0:
            bytes.resize(Pick(4 * 19200));
            for (char& b : bytes)
                b = char(Pick(256));
            break;
        case 1:
            bytes = valid;
            for (int n = Pick(200); n > 0 && !bytes.isEmpty(); --n)
                bytes[Pick(int(bytes.size()))] = char(Pick(256));
            [[fallthrough]];
        default:
            if (bytes.isEmpty())
                bytes = valid;
            for (int n = Pick(12); n > 0; --n) {
                static const QByteArray planted[] = {"..",
                                                     "../../etc/passwd",
                                                     "a\\..\\..\\b",
                                                     "C:\\x",
                                                     "/abs",
                                                     "ok",
                                                     "CON",
                                                     ".",
                                                     "\x01name",
                                                     "A NAME OF MORE THAN 32 CHARS "
                                                     "AND MORE",
                                                     "******",
                                                     "x, 7",
                                                     "x,99999999",
                                                     ",5"};
                const QByteArray& name = planted[Pick(std::size(planted))];
                bytes.replace(qsizetype(Pick(int(bytes.size() / 64) + 1)) * 64, 0,
                              name + QByteArray(64 - name.size() % 64, ' '));
            }
            break;
        }
        if (Pick(2) == 0)
            bytes.truncate(Pick(int(bytes.size()) + 1));
        return bytes;
    }
    int Pick(int below) {
        return below <= 0 ? 0 : std::uniform_int_distribution<int>(0, below - 1)(m_random);
    }

private:
    std::mt19937 m_random;
};

} // namespace

TEST(ReaderFuzz, TheIndexAndTableReadersTakeAnyBytes) {
    Garbage garbage(20261123);
    const QByteArray valid = FreshIndex();
    for (int round = 0; round < 3000; ++round) {
        const QByteArray bytes = garbage.Next(valid);
        for (int variant : {1, 2}) {
            const QList<RainerSlot> slots = ParseRainerIndex(bytes, variant);
            ASSERT_LE(slots.size(), 300);
            if (!slots.isEmpty()) {
                ASSERT_LT(qsizetype(SlotRecord(variant, slots.last().slot) - 1) * 64, bytes.size())
                    << "no slot is read beyond the last record";
            }
            for (int i = 0; i < slots.size(); ++i) {
                ASSERT_EQ(slots.at(i).slot, i + 1);
                ASSERT_LE(slots.at(i).name.size(), 32);
                ASSERT_EQ(slots.at(i).free, slots.at(i).name.isEmpty());
            }
        }
        for (const LookupLine& line : ParseLookupTable(bytes)) {
            ASSERT_NE(TrimBlanks(line.text), "******") << "nothing is read past the end marker";
            ASSERT_LE(line.number, 32767);
        }
    }
}
