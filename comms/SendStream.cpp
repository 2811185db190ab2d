#include "comms/SendStream.h"

#include "comms/SendEngine.h"
#include "platform/ScreenText.h"

namespace kestrova {

namespace {

constexpr quint8 Lf = 10;
constexpr quint8 Cr = 13;

} // namespace

QString SendHeaderOrLeader(const SendSettings& settings, const SendMachine& machine, const QString& directory,
                           const QString& program) {
    const QString& end = settings.LineEnd;
    if (machine.TerminalMode) {
        // The header the background receive of another installation reads.
        return QChar(23) + machine.Name + end + QChar(24) + directory + end + QChar(25) + program + end;
    }
    if (machine.IntermotionType == 3)
        return QChar(1) + directory + end + QChar(2) + program + end;
    if (machine.IntermotionType >= 4 && machine.IntermotionType <= 6)
        return QChar(24) + directory + end + QChar(25) + program + end;
    return settings.Leader;
}

std::bitset<256> SendFilterOf(const SendSettings& settings) {
    std::bitset<256> filtered;
    for (const QChar c : settings.SendFilter)
        if (const int byte = ByteOfScreenChar(c); byte >= 0)
            filtered.set(size_t(byte));
    return filtered;
}

QString SendFormOf(quint8 byte, const QString& lineEnd, const std::bitset<256>& filtered) {
    if (byte == Lf)
        return {};
    if (byte == Cr)
        return lineEnd;
    if (filtered.test(byte))
        return {};
    return QString(ScreenCharOf(byte));
}

} // namespace kestrova
