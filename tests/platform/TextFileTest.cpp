#include "platform/TextFile.h"

#include "InstallationFixture.h"
#include "Thrown.h"
#include "platform/RecordFile.h"

#include <QDir>
#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::InstallationFixture;
using kestrova::testing::Thrown;
using kestrova::testing::ThrownText;

TEST(LineReader, EndsALineAtCrLfLfOrCrAndReadsOnlyWhatIsAskedOrNamesAMissingFile) {
    InstallationFixture fx;
    // A CR LF pair straddling the reader's 16 KB chunks must still be one line end.
    QByteArray bytes(16383, 'a');
    bytes += "\r\nb\rc\nd\r\n\r\ne\x80\xff";
    fx.Write(QStringLiteral("C:\\lines.txt"), bytes);
    LineReader reader(fx.Files(), QStringLiteral("c:\\LINES.TXT"));
    EXPECT_EQ(reader.ReadLine(), QString(16383, u'a'));
    EXPECT_EQ(reader.ReadLine(), QStringLiteral("b"));
    EXPECT_EQ(reader.ReadLine(), QStringLiteral("c"));
    EXPECT_EQ(reader.ReadLine(), QStringLiteral("d"));
    EXPECT_EQ(reader.ReadLine(), QString());
    EXPECT_FALSE(reader.AtEnd());
    const QString last = reader.ReadLine();
    EXPECT_EQ(ToBytes(last), QByteArray("e\x80\xff")) << "single-byte text comes back byte for byte";
    EXPECT_TRUE(reader.AtEnd());
    EXPECT_EQ(ThrownText<InputPastEndError>([&] { (void)reader.ReadLine(); }),
              QStringLiteral("Input past end of file: \"C:\\LINES.TXT\""));

    // An empty file is at its end at once; a missing one is named.
    fx.Write(QStringLiteral("C:\\empty.txt"), "");
    LineReader empty(fx.Files(), QStringLiteral("C:\\empty.txt"));
    EXPECT_TRUE(empty.AtEnd());
    EXPECT_THROW((void)empty.ReadLine(), InputPastEndError);
    const auto missing = Thrown<FileNotFoundError>(
        [&] { LineReader(fx.Files(), QStringLiteral("C:\\Kestrova\\Missing.cfg")); });
    ASSERT_TRUE(missing);
    EXPECT_EQ(missing->subject(), QStringLiteral("C:\\Kestrova\\Missing.cfg"));
}

// Files of several of the reader's 16 KB chunks, with a line straddling every chunk boundary
// at every offset near it, and every kind of line end split across a boundary.
TEST(LineReader, LinesStraddlingEveryChunkBoundaryComeBackWhole) {
    InstallationFixture fx;
    const qsizetype chunk = 16384;
    for (const QByteArray& end : {QByteArray("\r\n"), QByteArray("\n"), QByteArray("\r")}) {
        for (qsizetype shift = -3; shift <= 3; ++shift) {
            // Lines of varying length so that each boundary falls somewhere else in a line.
            QList<QByteArray> lines;
            QByteArray bytes;
            for (int n = 0; bytes.size() < 3 * chunk + 100; ++n) {
                const qsizetype length = n == 0 ? chunk - end.size() + shift : 1 + (n * 997) % 5000;
                lines << QByteArray(length, char('a' + n % 26));
                bytes += lines.last() + end;
            }
            fx.Write(QStringLiteral("C:\\big.txt"), bytes);
            LineReader reader(fx.Files(), QStringLiteral("C:\\big.txt"));
            qsizetype n = 0;
            while (!reader.AtEnd()) {
                const QString line = reader.ReadLine();
                ASSERT_LT(n, lines.size());
                ASSERT_EQ(ToBytes(line), lines.at(n)) << "line " << n << " shift " << shift;
                ++n;
            }
            EXPECT_EQ(n, lines.size()) << "shift " << shift;
        }
    }
}

TEST(TextWriter, WritesCrLfAppendsAndReplacesOnlyOnClose) {
    InstallationFixture fx;
    FileSystem& files = fx.Files();
    const QString path = QStringLiteral("C:\\Kestrova\\Out.txt");
    WriteAllLines(files, path, {QStringLiteral("one"), QString(), QStringLiteral("thr\xe9")});
    EXPECT_EQ(fx.Read(path), QByteArray("one\r\n\r\nthr\xe9\r\n"));
    AppendLines(files, path, {QStringLiteral("four")});
    EXPECT_EQ(fx.Read(path), QByteArray("one\r\n\r\nthr\xe9\r\nfour\r\n"));
    AppendLines(files, QStringLiteral("C:\\Kestrova\\New.lst"), {QStringLiteral("first")});
    EXPECT_EQ(fx.Read(QStringLiteral("C:\\Kestrova\\New.lst")), QByteArray("first\r\n"));

    {
        // A rewrite that never completes leaves the original, and nothing beside it.
        TextWriter abandoned(files, path, TextWriter::Mode::Replace);
        abandoned.WriteLine(QStringLiteral("half"));
    }
    EXPECT_EQ(fx.Read(path), QByteArray("one\r\n\r\nthr\xe9\r\nfour\r\n"));
    EXPECT_EQ(
        QDir(fx.Host(QStringLiteral("C:\\Kestrova"))).entryList({"*Out.txt*"}, QDir::Files | QDir::Hidden),
        (QStringList{"Out.txt"}));

    EXPECT_THROW(WriteAllLines(files, QStringLiteral("C:\\No Such Dir\\x.txt"), {}), PathNotFoundError);
}

// Bytes 0x80..0x9F are shown as Windows-1252 whichever way a text is read, and every way of
// writing gives back the byte: a byte read one way and written another would change on disk.
TEST(ScreenText, HighBytesShowAsWindows1252AndGoBackToTheDiskUnchanged) {
    struct Case {
        char byte;
        char16_t shown;
    };
    const Case cases[] = {{'\x80', u'\u20AC'},
                          {'\x82', u'\u201A'},
                          {'\x85', u'\u2026'},
                          {'\x8A', u'\u0160'},
                          {'\x8C', u'\u0152'},
                          {'\x8E', u'\u017D'},
                          {'\x91', u'\u2018'},
                          {'\x96', u'\u2013'},
                          {'\x99', u'\u2122'},
                          {'\x9A', u'\u0161'},
                          {'\x9E', u'\u017E'},
                          {'\x9F', u'\u0178'},
                          // The five codes the page leaves undefined stand for themselves.
                          {'\x81', u'\u0081'},
                          {'\x8D', u'\u008D'},
                          {'\x8F', u'\u008F'},
                          {'\x90', u'\u0090'},
                          {'\x9D', u'\u009D'},
                          // Above 0x9F the page is Latin-1: the no-break space stays a character of its own.
                          {'\xA0', u'\u00A0'},
                          {'\xE9', u'\u00E9'}};
    InstallationFixture fx;
    FileSystem& files = fx.Files();
    const QString read = QStringLiteral("C:\\Kestrova\\In.txt");
    const QString written = QStringLiteral("C:\\Kestrova\\Out.txt");
    for (const Case& c : cases) {
        SCOPED_TRACE(int(quint8(c.byte)));
        const QByteArray bytes = QByteArray("Machine : A") + c.byte + "1";
        const QString shown = QStringLiteral("Machine : A") + QChar(c.shown) + u'1';
        fx.Write(read, bytes + "\r\n");
        EXPECT_EQ(FromBytes(bytes), shown);
        EXPECT_EQ(ReadAllLines(files, read), QStringList(shown));
        EXPECT_EQ(LineReader(files, read).ReadLine(), shown);
        EXPECT_EQ(ToBytes(shown), bytes);
        // Text typed on screen goes to the disk as the byte it shows.
        WriteAllLines(files, written, {shown});
        EXPECT_EQ(fx.Read(written), bytes + "\r\n");
        TextWriter writer(files, written, TextWriter::Mode::Append);
        writer.Write(shown);
        writer.Close();
        EXPECT_EQ(fx.Read(written), bytes + "\r\n" + bytes);
    }
    QByteArray all;
    for (int b = 0; b < 256; ++b)
        all.append(char(b));
    EXPECT_EQ(ToBytes(FromBytes(all)), all);
    EXPECT_EQ(ToBytes(QStringLiteral("\u4e2d\u0080")), QByteArray("??")) << "not in the page";
}

TEST(RecordFile, ReadsAndWritesFixedRecordsNumberedFromOne) {
    InstallationFixture fx;
    const QString index = QStringLiteral("A:\\INDICE--.PRG");
    {
        RecordFile records(fx.Files(), index, 64);
        EXPECT_EQ(records.RecordCount(), 0);
        records.Write(3, QByteArray("third"));
        records.Write(1, QByteArray(70, '$'));
        EXPECT_EQ(records.RecordCount(), 3);
        EXPECT_EQ(records.Read(2), QByteArray(64, '\0'));
        EXPECT_EQ(records.Read(3).left(6), QByteArray("third\0", 6));
        EXPECT_TRUE(records.AtEnd(3));
        EXPECT_FALSE(records.AtEnd(2));
        records.Close();
    }
    const QByteArray bytes = fx.Read(index);
    ASSERT_EQ(bytes.size(), 192);
    EXPECT_EQ(bytes.left(64), QByteArray(64, '$')) << "a record is cut to its length";
    EXPECT_EQ(bytes.mid(128, 5), QByteArray("third"));
    RecordFile reopened(fx.Files(), QStringLiteral("a:\\indice--.prg"), 64);
    EXPECT_EQ(reopened.Read(3).left(5), QByteArray("third"));
}
