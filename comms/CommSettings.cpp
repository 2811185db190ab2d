#include "comms/CommSettings.h"

#include "platform/TextFile.h"
#include "settings/SettingsLine.h"

#include <algorithm>
#include <cmath>

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

// Parses the value of line n of the file at path; a value out of range is refused naming both.
template <typename Parse>
auto OnLine(const QString& path, int n, const QString& value, Parse parse) {
    try {
        return parse(value);
    } catch (const SystemError& e) {
        if (!e.subject().isEmpty())
            throw;
        ThrowSystemError(e.kind(), path, QStringLiteral("line %1: \"%2\"").arg(n).arg(value));
    }
}

// A time in milliseconds clamped to 0..65535, however large the number written.
int ClampedMilliseconds(const QString& value) {
    return int(std::clamp(std::nearbyint(LeadingNumber(value)), 0.0, 65535.0));
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

CommonLines ReadCommonLines(LineReader& in, const QString& path) {
    auto next = [&in] { return ValueOfLine(in.ReadLine()); };
    CommonLines c;
    (void)in.ReadLine(); // the title
    c.port = OnLine(path, 2, next(), PortNumber);
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

void ParseMachineLines(const CommonLines& c, MachineLineSettings& s, const QString& path) {
    s.Port = c.port;
    s.Settings = c.settings;
    s.Handshaking = HandshakeCode(c.handshake);
    s.StartCharacter = OnLine(path, 9, c.startCharacter, ParseStartCharacter);
    s.Leader = OnLine(path, 10, c.leader, ParseSequence);
    s.LineEnd = OnLine(path, 11, c.lineEnd, ParseSequence);
    s.Trailer = OnLine(path, 12, c.trailer, ParseSequence);
    s.EndSequence = OnLine(path, 13, c.endSequence, ParseSequence);
    s.SendFilter = OnLine(path, 14, c.sendFilter, ParseCharacterList);
    s.ReceiveFilter = OnLine(path, 15, c.receiveFilter, ParseCharacterList);
}

// A number or a sequence beyond its range is "Overflow", named with the file it stands in.
template <typename Read>
auto NamingTheFile(const QString& file, Read read) -> decltype(read()) {
    try {
        return read();
    } catch (const OverflowError& e) {
        if (!e.subject().isEmpty())
            throw;
        throw OverflowError(file, e.detail());
    }
}

SendSettings ReadSendLines(const FileSystem& files, const QString& path) {
    LineReader in(files, path);
    const CommonLines c = ReadCommonLines(in, path);
    SendSettings s;
    ParseMachineLines(c, s, path);
    s.Dtr = HandshakeWantsDtr(c.handshake);
    s.Start = ParseStartMode(c.startMode);
    // The time-out: how long the end of a send waits for the control to take the rest.
    s.TimeOut = ClampedMilliseconds(ValueOfLine(in.ReadLine()));
    int n = 17;
    for (int* pause : {&s.PauseAfterStart, &s.PauseAfterLeader, &s.PauseAfterLine, &s.PauseAfterTrailer}) {
        if (in.AtEnd())
            break;
        *pause = OnLine(path, n++, ValueOfLine(in.ReadLine()), RoundedNumber);
    }
    return s;
}

ReceiveSettings ReadReceiveLines(const FileSystem& files, const QString& path) {
    LineReader in(files, path);
    const CommonLines c = ReadCommonLines(in, path);
    ReceiveSettings s;
    ParseMachineLines(c, s, path);
    s.ReceiveTimeOut = ClampedMilliseconds(ValueOfLine(in.ReadLine()));
    return s;
}

BackgroundSettings ReadBackgroundLines(const FileSystem& files, const QString& systemPath) {
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
    s.Port = OnLine(path, 2, next(), PortNumber);
    const QString baud = next();
    const QString parity = next();
    const QString dataBits = next();
    const QString stopBits = next();
    s.Settings = JoinSettings(baud, parity, dataBits, stopBits);
    s.Handshaking = HandshakeCode(next());
    for (int line = 8; line <= 11; ++line)
        (void)next();
    s.Trailer = OnLine(path, 12, next(), ParseSequence);
    s.EndSequence = OnLine(path, 13, next(), ParseSequence);
    (void)next(); // 14 the send filter
    s.ReceiveFilter = OnLine(path, 15, next(), ParseCharacterList);
    (void)next(); // 16 the receive time-out
    (void)next(); // 17 the pause after the start
    s.Enabled = s.Port >= 1;
    return s;
}

} // namespace

SendSettings ReadSendSettings(const FileSystem& files, const QString& path) {
    return NamingTheFile(files.FullPath(path), [&] { return ReadSendLines(files, path); });
}

ReceiveSettings ReadReceiveSettings(const FileSystem& files, const QString& path) {
    return NamingTheFile(files.FullPath(path), [&] { return ReadReceiveLines(files, path); });
}

BackgroundSettings ReadBackgroundSettings(const FileSystem& files, const QString& systemPath) {
    return NamingTheFile(files.FullPath(systemPath + BackgroundSettingsName),
                         [&] { return ReadBackgroundLines(files, systemPath); });
}

} // namespace kestrova
