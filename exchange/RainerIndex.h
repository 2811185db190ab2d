#pragma once

#include "platform/FileSystem.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace kestrova {

// The index of a Rainer floppy, "A:\INDICE--.PRG": records of 64 bytes numbered from 1, no
// header. Bytes 0 to 59 hold the entry text, one byte per character; bytes 60 to 63 the entry
// trailer. A used entry is the program name padded with blanks to 50, ten zero bytes and the
// variant's trailer; a free entry is sixty "$" and four zero bytes. The index is always made
// with 300 records, and a scan never goes past slot 300.
//
// Variant 1 keeps slot k in record k; variant 2 in record k + 2, so records 1 and 2 are never
// read or written by the slot operations and a fresh index offers 298 slots.
namespace rainer {

inline constexpr int RecordLength = 64;
inline constexpr int TextLength = 60;
inline constexpr int NameLength = 50;
inline constexpr int NameReadLength = 32;
inline constexpr int SlotLimit = 300;
inline constexpr int FreshRecords = 300;

inline const QString IndexPath = QStringLiteral("A:\\INDICE--.PRG");
inline const QString Drive = QStringLiteral("A:");

} // namespace rainer

// The number's decimal text with "0" put in front until it has the width; a longer text whole.
[[nodiscard]] QString ZeroPad(int number, int width);

// "A:\P007---.PRG" for slot 7.
[[nodiscard]] QString SlotFileName(int slot);

// The record that holds a slot: k for variant 1, k + 2 for variant 2.
[[nodiscard]] int SlotRecord(int variant, int slot);

// The four trailer bytes of a used entry of the variant.
[[nodiscard]] QByteArray EntryTrailer(int variant);

// The 64 bytes of a used entry. The name must be at most 50 characters.
[[nodiscard]] QByteArray UsedEntry(int variant, const QString& name);
// The 64 bytes of a free entry.
[[nodiscard]] QByteArray FreeEntry();
// A fresh index: 300 free records, 19,200 bytes, whatever the variant.
[[nodiscard]] QByteArray FreshIndex();

// One slot as read from the index.
struct RainerSlot {
    int slot = 0;
    bool free = true;
    QString name; // the first 32 characters of the text, blanks trimmed; "" when free
};

// The slots of an index held in bytes, slot 1 upwards, as far as the records go and never past
// slot 300. A last record cut short reads as if padded with zero bytes. Any bytes at all are
// read without harm: this is what every scan of the floppy goes through.
[[nodiscard]] QList<RainerSlot> ParseRainerIndex(const QByteArray& bytes, int variant);

// The slots of the floppy's index; none when the index does not exist. The index is read whole
// and closed again at once.
[[nodiscard]] QList<RainerSlot> ReadRainerIndex(const FileSystem& files, int variant);

// Writes one slot's record, as a used entry of the name or as a free entry. The index is opened
// and closed around the single write.
void WriteUsedSlot(FileSystem& files, int variant, int slot, const QString& name);
void WriteFreeSlot(FileSystem& files, int variant, int slot);

// Writes a fresh index of 300 free records in place of whatever is there; a write that fails
// leaves the old index as it was.
void WriteFreshIndex(FileSystem& files);

} // namespace kestrova
