// Take received text must file the same programs however the byte stream is cut into chunks:
// in one piece, a character at a time, and cut once at every point of a stream of several programs.
#include "CommsInstallation.h"
#include "comms/BackgroundReceive.h"
#include "platform/TextFile.h"

#include <gtest/gtest.h>
#include <set>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

const QByteArray Trailer = "\r\n%"; // "1,13,1,10,1,37"

struct Sent {
    QByteArray text; // what the machine sends before the trailer
    QString filedAs; // where the rules put it
    bool header;     // whether its first lines carry markers
};

// The programs of the stream, in order. None holds a trailer, and none starts with a character
// that could begin one, so every trailer in the stream ends a program.
const QList<Sent> Programs = {
    {"\x17PUNCH1\r\n\x18Parts\r\n\x19"
     "A1\r\n  G1 X1  \r\n\r\nG2 Y2",
     "C:\\Jobs\\PUNCH1\\Parts\\A1.prg", true},
    {"N10 G90\r\nN20 M30", "C:\\Jobs\\PUNCH1\\Parts\\New Program 1.prg", false},
    {"\x17rainer\r\n\x18Sheets\r\n\x19"
     "B2\r\nM30",
     "C:\\Jobs\\RAINER\\Sheets\\B2.prg", true},
    {QByteArray("X\0Y\r\nZ", 6), "C:\\Jobs\\PUNCH1\\Parts\\New Program 2.prg", false},
    {"\x17PUNCH1\r\n\x18Parts\r\n\x19../evil\r\nG4", "C:\\Jobs\\PUNCH1\\Parts\\New Program 3.prg", true},
};

// The received file as the rules describe it: the text between two trailers, all of the
// trailer but its last character at its end, and in front the previous trailer's last
// character exactly when that trailer did not end its chunk. The receive filter drops NULs.
QByteArray ExpectedReceived(int index, bool previousEndedChunk) {
    QByteArray bytes;
    if (index > 0 && !previousEndedChunk)
        bytes += Trailer.right(1);
    bytes += Programs.at(index).text + Trailer.chopped(1);
    bytes.replace(QByteArray(1, '\0'), QByteArray());
    return bytes;
}

// What is filed from a received text: with header markers, every line trimmed, without empty
// lines and marker lines, each ended by CR LF; without, the text itself.
QByteArray ExpectedFiled(const QByteArray& received, bool header) {
    if (!header)
        return received;
    QByteArray out;
    QByteArray text = received;
    text.replace("\r\n", "\n").replace('\r', '\n');
    for (const QByteArray& raw : text.split('\n')) {
        const QByteArray line = raw.trimmed();
        if (line.isEmpty() || line.contains('\x17') || line.contains('\x18') || line.contains('\x19'))
            continue;
        out += line + "\r\n";
    }
    return out;
}

class ChunkBoundaries : public ::testing::Test {
protected:
    void SetUp() override {
        TestApplication();
        SetValues(fx, BackgroundCms, {{"Port", "2"}, {"Trailer", "1,13,1,10,1,37"}, {"Receive Filter", "0"}});
        fx.Load();
        for (const Sent& p : Programs) {
            stream += p.text + Trailer;
            trailerEnds << int(stream.size()); // the offset just past each trailer
        }
    }

    // Feeds the stream cut at the given offsets and checks what was filed.
    void Check(const std::set<int>& cuts) {
        auto line = std::make_unique<ScriptedSerialLine>();
        BackgroundReceive receive(fx.session(), std::move(line));
        receive.Start();
        int from = 0;
        QList<int> chunkEnds;
        for (int cut : cuts) {
            if (cut <= from || cut >= stream.size())
                continue;
            receive.TakeReceivedText(FromBytes(stream.mid(from, cut - from)));
            chunkEnds << cut;
            from = cut;
        }
        receive.TakeReceivedText(FromBytes(stream.mid(from)));
        chunkEnds << int(stream.size());

        std::string cutText;
        for (int c : chunkEnds)
            cutText += std::to_string(c) + " ";
        QStringList listed;
        for (int i = 0; i < Programs.size(); ++i) {
            const bool endedChunk = i > 0 && chunkEnds.contains(trailerEnds.at(i - 1));
            const QByteArray expected = ExpectedFiled(ExpectedReceived(i, endedChunk), Programs.at(i).header);
            ASSERT_TRUE(fx.OnDisk(Programs.at(i).filedAs))
                << "program " << i << " with chunks ending at " << cutText;
            ASSERT_EQ(fx.Read(Programs.at(i).filedAs), expected)
                << "program " << i << " with chunks ending at " << cutText;
            fx.Remove(Programs.at(i).filedAs);
        }
        // Nothing doubled, nothing else: five list lines, and no further default names.
        ASSERT_EQ(fx.ReadLines("C:\\Kestrova\\Receive.lst").size(), Programs.size()) << cutText;
        ASSERT_FALSE(fx.OnDisk("C:\\Jobs\\PUNCH1\\Parts\\New Program 4.prg")) << cutText;
        ASSERT_FALSE(receive.Receiving()) << cutText;
        fx.Remove("C:\\Kestrova\\Receive.lst");
    }

    InstallationFixture fx;
    QByteArray stream;
    QList<int> trailerEnds;
};

} // namespace

TEST_F(ChunkBoundaries, OneChunkEveryCharacterAloneAndEverySingleCutPoint) {
    Check({});
    std::set<int> all;
    for (int i = 1; i < stream.size(); ++i)
        all.insert(i);
    Check(all);
    for (int cut = 1; cut < stream.size() && !HasFatalFailure(); ++cut)
        Check({cut});
}
