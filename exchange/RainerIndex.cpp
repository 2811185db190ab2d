#include "exchange/RainerIndex.h"

#include "platform/Blanks.h"
#include "platform/RecordFile.h"
#include "platform/TextFile.h"

namespace kestrova {

QString ZeroPad(int number, int width) {
    QString text = QString::number(number);
    while (text.size() < width)
        text.prepend(u'0');
    return text;
}

QString SlotFileName(int slot) {
    return QStringLiteral("A:\\P") + ZeroPad(slot, 3) + QStringLiteral("---.PRG");
}

int SlotRecord(int variant, int slot) {
    return variant == 2 ? slot + 2 : slot;
}

QByteArray EntryTrailer(int variant) {
    return variant == 2 ? QByteArray("\xA1\x68\x7E\x5A", 4) : QByteArray("\xDF\x01\xD7\x02", 4);
}

QByteArray UsedEntry(int variant, const QString& name) {
    QByteArray record = ToBytes(name.left(rainer::NameLength));
    record.append(QByteArray(rainer::NameLength - record.size(), ' '));
    record.append(QByteArray(rainer::TextLength - rainer::NameLength, '\0'));
    record.append(EntryTrailer(variant));
    return record;
}

QByteArray FreeEntry() {
    return QByteArray(rainer::TextLength, '$') + QByteArray(rainer::RecordLength - rainer::TextLength, '\0');
}

QByteArray FreshIndex() {
    return FreeEntry().repeated(rainer::FreshRecords);
}

QList<RainerSlot> ParseRainerIndex(const QByteArray& bytes, int variant) {
    const qsizetype records = (bytes.size() + rainer::RecordLength - 1) / rainer::RecordLength;
    QList<RainerSlot> slots;
    for (int slot = 1; slot <= rainer::SlotLimit; ++slot) {
        const int record = SlotRecord(variant, slot);
        if (record > records)
            break;
        QByteArray text = bytes.mid(qsizetype(record - 1) * rainer::RecordLength, rainer::TextLength);
        // A record cut short reads as the machine reads it: padded with zero bytes.
        text.append(QByteArray(rainer::TextLength - text.size(), '\0'));
        RainerSlot entry;
        entry.slot = slot;
        const char first = text.at(0);
        if (first != '\0' && first != '$')
            entry.name = TrimBlanks(FromBytes(text.left(rainer::NameReadLength)));
        entry.free = entry.name.isEmpty();
        slots << entry;
    }
    return slots;
}

QList<RainerSlot> ReadRainerIndex(const FileSystem& files, int variant) {
    if (!files.IsFile(rainer::IndexPath))
        return {};
    return ParseRainerIndex(ReadAllBytes(files, rainer::IndexPath), variant);
}

void WriteUsedSlot(FileSystem& files, int variant, int slot, const QString& name) {
    RecordFile index(files, rainer::IndexPath, rainer::RecordLength);
    index.Write(SlotRecord(variant, slot), UsedEntry(variant, name));
    index.Close();
}

void WriteFreeSlot(FileSystem& files, int variant, int slot) {
    RecordFile index(files, rainer::IndexPath, rainer::RecordLength);
    index.Write(SlotRecord(variant, slot), FreeEntry());
    index.Close();
}

void WriteFreshIndex(FileSystem& files) {
    // Replaced whole: until the new index is complete on the disk, the old one (or none) stays.
    TextWriter index(files, rainer::IndexPath, TextWriter::Mode::Replace);
    index.WriteBytes(FreshIndex());
    index.Close();
}

} // namespace kestrova
