// "Work.lkp" as a person or another program may leave it in an export target, read and then
// rewritten by a lookup export, against a model of the table's rules: the lines are read up to
// "******", every line other than the program's entry is copied through byte for byte, the
// program keeps the number of its entry or gets the lowest number no file of the target uses,
// and nothing is written outside the target but the temporary table, which is gone afterwards.
//
// Input: byte 0 picks the program name (a fixed one or the name of a line of the table) and the
// answer to the overwrite question, byte 1 which numbered files the target holds already, byte 2
// which of them have an extension; the rest is the table.
#include "../exchange/DirectorySnapshot.h"
#include "FuzzSupport.h"
#include "InstallationFixture.h"
#include "exchange/ExportFile.h"
#include "exchange/LookupTable.h"
#include "platform/Blanks.h"
#include "settings/SettingsFile.h"

#include <QSet>

using namespace kestrova;

namespace {

const QString Target = QStringLiteral("E:\\Out\\");
const QString Source = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\");
const QString Temp = QStringLiteral("C:\\Kestrova\\V3Temp.lkp");

// The lines of the bytes, each as it stands, split at CR LF, LF or CR.
QList<QByteArray> RawLines(const QByteArray& text) {
    QList<QByteArray> lines;
    qsizetype start = 0;
    for (qsizetype i = 0; i < text.size();) {
        const char c = text.at(i);
        if (c != '\r' && c != '\n') {
            ++i;
            continue;
        }
        lines << text.mid(start, i - start);
        i += (c == '\r' && i + 1 < text.size() && text.at(i + 1) == '\n') ? 2 : 1;
        start = i;
    }
    if (start < text.size())
        lines << text.mid(start);
    return lines;
}

// What the reader must make of the table, checked line by line against the raw lines.
void CheckParse(const QList<LookupLine>& lines, const QList<QByteArray>& raw) {
    KESTROVA_FUZZ_CHECK(lines.size() <= raw.size());
    for (int i = 0; i < lines.size(); ++i) {
        const LookupLine& line = lines.at(i);
        const QString trimmed = TrimBlanks(FromBytes(raw.at(i)));
        KESTROVA_FUZZ_CHECK(line.text == FromBytes(raw.at(i)));
        KESTROVA_FUZZ_CHECK(trimmed != EndMarker);
        KESTROVA_FUZZ_CHECK(line.number <= 32767);
        const qsizetype comma = trimmed.indexOf(u',');
        if (comma < 0) {
            KESTROVA_FUZZ_CHECK(line.number == 0 && !line.Matches(line.name));
            continue;
        }
        KESTROVA_FUZZ_CHECK(line.name == TrimBlanks(trimmed.left(comma)));
        if (line.number >= 1) {
            // The number is the value of the text after the comma: its digits are there.
            KESTROVA_FUZZ_CHECK(trimmed.mid(comma + 1).contains(QString::number(line.number).right(1)));
        }
    }
    // The reader stops at the end marker and nowhere else.
    if (lines.size() < raw.size())
        KESTROVA_FUZZ_CHECK(TrimBlanks(FromBytes(raw.at(lines.size()))) == EndMarker);
}

// The entry line written for a name reads back as that name and number.
void CheckEntryLine(const QString& name, int number) {
    const QList<LookupLine> back = ParseLookupTable(ToBytes(LookupEntryLine(name, number)) + "\r\n");
    KESTROVA_FUZZ_CHECK(back.size() == 1);
    KESTROVA_FUZZ_CHECK(back.first().name == name && back.first().number == number);
}

bool IsNumbered(const QString& file, int n) {
    const QString digits = QString::number(n);
    return file == digits || file.startsWith(digits + u'.');
}

// Every path the export writes, deletes or opens for writing, as the host file layer meets it.
struct WrittenPaths {
    QStringList paths;
    void Watch(FileSystem& files) {
        files.SetFaultHook([this](FileStep step, const QString& path) {
            // Forcing to the disk a file written before is no write.
            if (step != FileStep::Read && step != FileStep::Sync)
                paths << path;
            return 0;
        });
    }
};

struct Installation {
    testing::InstallationFixture fx;
    Installation() { fx.Load(); }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 3)
        return 0;
    fuzz::EnsureApplication();
    static Installation installation;
    testing::InstallationFixture& fx = installation.fx;
    fx.Messages().Clear();

    const QByteArray table = fuzz::Bytes(data + 3, size - 3);
    const QList<QByteArray> raw = RawLines(table);
    const QList<LookupLine> lines = ParseLookupTable(table);
    CheckParse(lines, raw);

    // The program's name in the table: a fixed one, or the name a line of the table holds.
    static const QString fixed[] = {QStringLiteral("X"), QStringLiteral("cover"), QStringLiteral("NEW PART")};
    QString name = fixed[data[0] % std::size(fixed)];
    const int pick = (data[0] >> 2) % 8;
    if (pick < lines.size() && !lines.at(pick).name.isEmpty() && lines.at(pick).name.size() <= 64)
        name = lines.at(pick).name;
    const Answer overwrite = (data[0] & 0x80) != 0 ? Answer::No : Answer::Yes;

    fx.Remove(QStringLiteral("E:\\Out"));
    fx.Write(Target + LookupTableName, table);
    QSet<int> used;
    for (int n = 1; n <= 8; ++n) {
        if ((data[1] >> (n - 1)) & 1) {
            fx.Write(Target + QString::number(n) +
                         ((data[2] >> (n - 1)) & 1 ? QStringLiteral(".inf") : QString()),
                     "old " + QByteArray::number(n));
            used << n;
        }
    }
    const QString host = fx.Host(QStringLiteral("E:\\Out"));
    const QMap<QString, QByteArray> before = testing::TreeContents(host);

    int expected = 1;
    while (used.contains(expected))
        ++expected;
    KESTROVA_FUZZ_CHECK(FirstFreeNumber(fx.Files(), Target) == expected);
    const int match = FindLookupEntry(lines, name);
    if (match >= 0)
        expected = lines.at(match).number;

    if (match >= 0)
        fx.Messages().Script({overwrite});
    WrittenPaths written;
    written.Watch(fx.Files());
    const int exported = ExportFile(fx.session(), Source, QStringLiteral("X"), Target, name, 2, true, false,
                                    QStringLiteral("prg"));
    fx.Files().SetFaultHook({});

    // One question at most: the overwrite of a program the table already holds.
    KESTROVA_FUZZ_CHECK(fx.Messages().Texts().size() == (match >= 0 ? 1 : 0));
    const QMap<QString, QByteArray> after = testing::TreeContents(host);
    if (match >= 0 && overwrite == Answer::No) {
        KESTROVA_FUZZ_CHECK(exported == 0);
        KESTROVA_FUZZ_CHECK(after == before);
        KESTROVA_FUZZ_CHECK(written.paths.isEmpty());
        return 0;
    }
    KESTROVA_FUZZ_CHECK(exported == 1);
    for (const QString& path : written.paths)
        KESTROVA_FUZZ_CHECK(path.startsWith(Target, Qt::CaseInsensitive) ||
                            path.compare(Temp, Qt::CaseInsensitive) == 0);
    KESTROVA_FUZZ_CHECK(!fx.OnDisk(Temp));

    // The model: the old files of the number go, the program comes under the bare number with
    // its companions, and the table is the old lines with the entry in place or at the end.
    QMap<QString, QByteArray> model;
    for (auto it = before.cbegin(); it != before.cend(); ++it)
        if (!IsNumbered(it.key(), expected) && it.key() != LookupTableName)
            model.insert(it.key(), it.value());
    const QString stored = QString::number(expected);
    model.insert(stored, fx.Read(Source + QStringLiteral("X.prg")));
    model.insert(stored + QStringLiteral(".inf"), fx.Read(Source + QStringLiteral("X.inf")));
    model.insert(stored + QStringLiteral(".rpt"), fx.Read(Source + QStringLiteral("X.rpt")));
    const QByteArray entry = ToBytes(LookupEntryLine(name, expected)) + "\r\n";
    QByteArray text;
    for (int i = 0; i < lines.size(); ++i)
        text += i == match ? entry : raw.at(i) + "\r\n";
    if (match < 0)
        text += entry;
    model.insert(LookupTableName, text + "******\r\n");
    for (auto it = model.cbegin(); it != model.cend(); ++it)
        if (after.value(it.key()) != it.value())
            std::fprintf(stderr, "differs: %s\n", qPrintable(it.key()));
    KESTROVA_FUZZ_CHECK(after == model);

    // Read again, the table finds the program under its number.
    const QList<LookupLine> again = ReadLookupTable(fx.Files(), Target);
    const int found = FindLookupEntry(again, name);
    KESTROVA_FUZZ_CHECK(found >= 0 && again.at(found).number == expected);
    CheckEntryLine(name, expected);
    return 0;
}
