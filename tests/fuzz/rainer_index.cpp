// The index of a Rainer floppy, "A:\INDICE--.PRG", as a damaged disk or another machine may
// leave it: read in both variants, then listed, imported and deleted, against a model of the
// layout. No name that is not acceptable from outside is ever used for a file, nothing is
// written outside the chosen directory, the floppy and the program history (whose files a name from
// the floppy never names), each imported program is the slot's file byte for byte, and a deleted
// slot becomes a free record with every other byte kept.
//
// Input: byte 0 picks the variant and which slots lack their program file, byte 1 the answers to
// the overwrite questions; the rest is the index.
#include "../exchange/DirectorySnapshot.h"
#include "FuzzSupport.h"
#include "InstallationFixture.h"
#include "exchange/RainerFloppy.h"
#include "exchange/RainerIndex.h"
#include "filestore/KeyFilter.h"
#include "filestore/Names.h"
#include "platform/Blanks.h"

#include <QMap>
#include <algorithm>

using namespace kestrova;

namespace {

const QString Directory = QStringLiteral("C:\\Jobs\\PUNCH1\\Rainer\\");
const QString HistoryDirectory = QStringLiteral("C:\\Kestrova\\History\\");

// The slots as the layout defines them, read straight from the bytes.
QList<RainerSlot> ModelSlots(const QByteArray& bytes, int variant) {
    const int offset = variant == 2 ? 2 : 0;
    const qsizetype records = (bytes.size() + 63) / 64;
    QList<RainerSlot> slots;
    for (int slot = 1; slot <= 300 && slot + offset <= records; ++slot) {
        QByteArray text = bytes.mid(qsizetype(slot + offset - 1) * 64, 60);
        text.append(QByteArray(60 - text.size(), '\0'));
        const QString name = TrimBlanks(FromBytes(text.left(32)));
        const bool free = text.at(0) == '\0' || text.at(0) == '$' || name.isEmpty();
        slots << RainerSlot{slot, free, free ? QString() : name};
    }
    return slots;
}

// Questions answered from the input's bits, everything shown kept.
class Answers final : public MessageService {
public:
    explicit Answers(std::uint8_t bits) : m_bits(bits) {}
    Answer Show(const Message& message) override {
        texts << message.text;
        if (message.buttons == Buttons::Ok)
            return Answer::Ok;
        const bool yes = (m_bits >> (m_asked++ % 8)) & 1;
        return yes ? Answer::Yes : Answer::No;
    }
    void Beep() override {}
    void SetBusy(bool) override {}
    QStringList texts;

private:
    std::uint8_t m_bits;
    int m_asked = 0;
};

// Every path the operations write, delete or open for writing, as the host file layer meets it.
QStringList* g_written = nullptr;

QString Folded(const QString& name) {
    return name.toCaseFolded();
}

QMap<QString, QByteArray> FoldedTree(const QString& host) {
    QMap<QString, QByteArray> tree;
    const QMap<QString, QByteArray> contents = testing::TreeContents(host);
    for (auto it = contents.cbegin(); it != contents.cend(); ++it)
        tree.insert(Folded(it.key()), it.value());
    return tree;
}

struct Installation {
    testing::InstallationFixture fx;
    Installation() {
        fx.Load();
        fx.Files().SetFaultHook([](FileStep step, const QString& path) {
            // Forcing to the disk a file written before is no write.
            if (g_written && step != FileStep::Read && step != FileStep::Sync)
                *g_written << path;
            return 0;
        });
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2)
        return 0;
    const QByteArray index = fuzz::Bytes(data + 2, size - 2);
    for (int variant : {1, 2}) {
        const QList<RainerSlot> slots = ParseRainerIndex(index, variant);
        const QList<RainerSlot> model = ModelSlots(index, variant);
        KESTROVA_FUZZ_CHECK(slots.size() == model.size());
        for (int i = 0; i < slots.size(); ++i) {
            KESTROVA_FUZZ_CHECK(slots.at(i).slot == model.at(i).slot);
            KESTROVA_FUZZ_CHECK(slots.at(i).free == model.at(i).free);
            KESTROVA_FUZZ_CHECK(slots.at(i).name == model.at(i).name);
        }
    }

    fuzz::EnsureApplication();
    static Installation installation;
    testing::InstallationFixture& fx = installation.fx;
    const int variant = 1 + (data[0] & 1);
    const int missingEvery = (data[0] >> 1) % 8; // 0: every used slot has its file
    Answers answers(data[1]);
    GlobalSettings& g = fx.Settings();
    g.RainerType = Int16::From(variant);
    g.CurrentPath = Directory;
    Session session{g, fx.Files(), answers};

    // The floppy: the index and a file for each used slot but the missing ones.
    fx.Remove(QStringLiteral("A:\\"));
    fx.MakeDir(QStringLiteral("A:\\"));
    fx.Write(rainer::IndexPath, index);
    QMap<int, QByteArray> onFloppy;
    ListModel expectedList;
    for (const RainerSlot& slot : ModelSlots(index, variant)) {
        if (slot.free || (missingEvery != 0 && slot.slot % missingEvery == 0))
            continue;
        onFloppy.insert(slot.slot, "slot " + QByteArray::number(slot.slot) + "\r\n");
        fx.Write(SlotFileName(slot.slot), onFloppy.value(slot.slot));
        expectedList.Add(slot.name, slot.slot);
    }
    // The directory: a program of a name a floppy may hold too, with a companion, and a drawing.
    fx.Remove(QStringLiteral("C:\\Jobs\\PUNCH1\\Rainer"));
    fx.Write(Directory + QStringLiteral("PART1.prg"), "old part\r\n");
    fx.Write(Directory + QStringLiteral("PART1.inf"), "old info\r\n");
    fx.Write(Directory + QStringLiteral("Keep.drw"), "drawing\r\n");

    ListModel list;
    FillRainerList(session, list);
    KESTROVA_FUZZ_CHECK(list.entries == expectedList.entries);
    KESTROVA_FUZZ_CHECK(list.itemData == expectedList.itemData);
    KESTROVA_FUZZ_CHECK(list.selected == (list.Count() > 0 ? 0 : -1));

    QList<RainerChoice> chosen;
    for (int i = 0; i < list.Count(); ++i)
        chosen << RainerChoice{list.entries.at(i), list.itemData.at(i)};

    // Import: the model of the directory, folded to one letter case as the host file layer
    // matches names.
    const QString host = fx.Host(Directory);
    QMap<QString, QByteArray> model = FoldedTree(host);
    QStringList written;
    g_written = &written;
    (void)RainerImport(session, chosen);
    g_written = nullptr;
    int refused = 0;
    int imported = 0;
    bool answeredNo = false;
    // The import question comes first; answered No, nothing is done.
    {
        Answers replay(data[1]);
        if (!chosen.isEmpty())
            answeredNo = replay.Show({QString(), Buttons::YesNo}) != Answer::Yes;
        for (const RainerChoice& choice : chosen) {
            if (answeredNo)
                break;
            const QString name = TrimBlanks(choice.text.left(32));
            if (!AcceptableOutsideName(name)) {
                ++refused;
                continue;
            }
            const QString target = Folded(name + QStringLiteral(".prg"));
            if (model.contains(target) && replay.Show({QString(), Buttons::YesNo}) != Answer::Yes)
                continue;
            for (const QString& key : model.keys()) {
                const qsizetype dot = key.lastIndexOf(u'.');
                const QString extension = dot < 0 ? QString() : key.mid(dot + 1);
                if (dot >= 0 && key.left(dot) == Folded(name) &&
                    QStringList({"prg", "inf", "rpt", "stp"}).contains(extension))
                    model.remove(key);
            }
            model.insert(target, onFloppy.value(choice.slot));
            ++imported;
        }
    }
    KESTROVA_FUZZ_CHECK(answers.texts.count(InvalidFileName) == refused);
    if (!chosen.isEmpty() && !answeredNo)
        KESTROVA_FUZZ_CHECK(answers.texts.last().startsWith(
            imported == 0 ? QStringLiteral("No ") : QString::number(imported) + u' '));
    for (const QString& path : written) {
        // A program the import replaces is kept in the program history, under a number.
        if (path.startsWith(HistoryDirectory.chopped(1), Qt::CaseInsensitive)) {
            const QString file = path.mid(HistoryDirectory.size());
            bool numbered = false;
            if (file.size() == 12 && file.endsWith(QLatin1String(".prg")))
                (void)file.left(8).toUInt(&numbered);
            KESTROVA_FUZZ_CHECK(path.size() == HistoryDirectory.size() - 1 || file == u"History.lst" ||
                                numbered);
            continue;
        }
        KESTROVA_FUZZ_CHECK(path.startsWith(Directory, Qt::CaseInsensitive));
        const QString file = path.mid(Directory.size());
        const qsizetype dot = file.lastIndexOf(u'.');
        KESTROVA_FUZZ_CHECK(dot > 0 && AcceptableOutsideName(file.left(dot)));
    }
    const QMap<QString, QByteArray> after = FoldedTree(host);
    for (auto it = model.cbegin(); it != model.cend(); ++it)
        if (after.value(it.key()) != it.value())
            std::fprintf(stderr, "differs: %s\n", qPrintable(it.key()));
    KESTROVA_FUZZ_CHECK(after == model);

    // Delete: each chosen slot loses its file and becomes a free record; nothing else changes.
    written.clear();
    g_written = &written;
    Answers deleting(0xff);
    Session deleteSession{g, fx.Files(), deleting};
    (void)RainerDelete(deleteSession, chosen);
    g_written = nullptr;
    QByteArray expectedIndex = index;
    for (const RainerChoice& choice : chosen) {
        const qsizetype at = qsizetype(SlotRecord(variant, choice.slot) - 1) * 64;
        expectedIndex = expectedIndex.left(at) + FreeEntry() + expectedIndex.mid(at + 64);
        onFloppy.remove(choice.slot);
    }
    KESTROVA_FUZZ_CHECK(fx.Read(rainer::IndexPath) == expectedIndex);
    for (const QString& path : written)
        KESTROVA_FUZZ_CHECK(path.startsWith(QStringLiteral("A:\\"), Qt::CaseInsensitive));
    const QMap<QString, QByteArray> floppy = FoldedTree(fx.Host(QStringLiteral("A:\\")));
    KESTROVA_FUZZ_CHECK(floppy.size() == 1 + onFloppy.size());
    KESTROVA_FUZZ_CHECK(FoldedTree(host) == after);
    return 0;
}
