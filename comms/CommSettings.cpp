#include "comms/CommSettings.h"

#include "platform/TextFile.h"
#include "settings/SettingsLine.h"

#include <algorithm>

namespace kestrova {

namespace {

// Lines 3 to 6 joined as the serial control wants them: Baud, Parity, DataBits, StopBits.
QString JoinSettings(const QString& baud, const QString& parity, const QString& dataBits,
                     const QString& stopBits) {
    return baud + u',' + parity + u',' + dataBits + u',' + stopBits;
}

Int16 PortNumber(const QString& value) {
    return Int16::From(RoundedNumber(value));
}

// The lines both machine-file readers share, 1 to 15.
struct CommonLines {
    Int16 port;
    QString settings;
    QString handshake;
    QString startMode;
    QString startCharacter;
    QString leader;
    QString lineEnd;
    QString trailer;
    QString endSequence;
    QString sendFilter;
    QString receiveFilter;
};

CommonLines ReadCommonLines(LineReader& in) {
    auto next = [&in] { return ValueOfLine(in.ReadLine()); };
    CommonLines c;
    (void)in.ReadLine(); // the title
    c.port = PortNumber(next());
    const QString baud = next();
    const QString parity = next();
    const QString dataBits = next();
    const QString stopBits = next();
    c.settings = JoinSettings(baud, parity, dataBits, stopBits);
    c.handshake = next();
    c.startMode = next();
    c.startCharacter = next();
    c.leader = next();
    c.lineEnd = next();
    c.trailer = next();
    c.endSequence = next();
    c.sendFilter = next();
    c.receiveFilter = next();
    return c;
}

void ParseMachineLines(const CommonLines& c, MachineLineSettings& s) {
    s.Port = c.port;
    s.Settings = c.settings;
    s.Handshaking = HandshakeCode(c.handshake);
    s.StartCharacter = ParseStartCharacter(c.startCharacter);
    s.Leader = ParseSequence(c.leader);
    s.LineEnd = ParseSequence(c.lineEnd);
    s.Trailer = ParseSequence(c.trailer);
    s.EndSequence = ParseSequence(c.endSequence);
    s.SendFilter = ParseCharacterList(c.sendFilter);
    s.ReceiveFilter = ParseCharacterList(c.receiveFilter);
}

} // namespace

SendSettings ReadSendSettings(const FileSystem& files, const QString& path) {
    LineReader in(files, path);
    const CommonLines c = ReadCommonLines(in);
    SendSettings s;
    ParseMachineLines(c, s);
    s.Dtr = HandshakeWantsDtr(c.handshake);
    s.Start = ParseStartMode(c.startMode);
    (void)in.ReadLine(); // the receive time-out: the send has no use for it
    for (int* pause : {&s.PauseAfterStart, &s.PauseAfterLeader, &s.PauseAfterLine, &s.PauseAfterTrailer}) {
        if (in.AtEnd())
            break;
        *pause = RoundedNumber(ValueOfLine(in.ReadLine()));
    }
    return s;
}

ReceiveSettings ReadReceiveSettings(const FileSystem& files, const QString& path) {
    LineReader in(files, path);
    const CommonLines c = ReadCommonLines(in);
    ReceiveSettings s;
    ParseMachineLines(c, s);
    s.ReceiveTimeOut = std::clamp(RoundedNumber(ValueOfLine(in.ReadLine())), 0, 65535);
    return s;
}

BackgroundSettings ReadBackgroundSettings(const FileSystem& files, const QString& systemPath) {
    BackgroundSettings s;
    const QString path = systemPath + BackgroundSettingsName;
    if (!files.IsFile(path))
        return s;
    LineReader in(files, path);
    // One reading buffer for every line: when the file has ended, the last line read stays in
    // it and stands in for the missing ones. Short files written by hand have always been
    // read this way, and the values they give are kept.
    QString buffer;
    auto next = [&in, &buffer] {
        if (!in.AtEnd())
            buffer = in.ReadLine();
        return ValueOfLine(buffer);
    };
    (void)next(); // 1 the title
    s.Port = PortNumber(next());
    const QString baud = next();
    const QString parity = next();
    const QString dataBits = next();
    const QString stopBits = next();
    s.Settings = JoinSettings(baud, parity, dataBits, stopBits);
    s.Handshaking = HandshakeCode(next());
    for (int line = 8; line <= 11; ++line)
        (void)next();
    s.Trailer = ParseSequence(next());
    s.EndSequence = ParseSequence(next());
    (void)next(); // 14 the send filter
    s.ReceiveFilter = ParseCharacterList(next());
    (void)next(); // 16 the receive time-out
    (void)next(); // 17 the pause after the start
    s.Enabled = s.Port >= 1;
    return s;
}

} // namespace kestrova
