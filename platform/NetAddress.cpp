#include "platform/NetAddress.h"

#include <QHostAddress>
#include <algorithm>

namespace kestrova {

namespace {

// A host name as DNS has it: dot-separated labels of letters, digits and hyphens, none starting
// or ending with a hyphen, at most 63 characters each and 253 in all.
bool IsHostName(const QString& host) {
    if (host.isEmpty() || host.size() > 253)
        return false;
    for (const QString& label : host.split(u'.')) {
        if (label.isEmpty() || label.size() > 63 || label.startsWith(u'-') || label.endsWith(u'-'))
            return false;
        for (const QChar c : label)
            if (!(c.isDigit() || (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'-'))
                return false;
    }
    return true;
}

// Digits only, 1 to 65535.
std::optional<quint16> PortOf(const QString& text) {
    if (text.isEmpty() || text.size() > 5)
        return std::nullopt;
    int number = 0;
    for (const QChar c : text) {
        if (c < u'0' || c > u'9')
            return std::nullopt;
        number = number * 10 + (c.unicode() - u'0');
    }
    if (number < 1 || number > 65535)
        return std::nullopt;
    return quint16(number);
}

} // namespace

QString NetAddress::Text() const {
    const QString shown = host.contains(u':') ? u'[' + host + u']' : host;
    return shown + u':' + QString::number(port);
}

std::optional<NetAddress> ParseNetAddress(const QString& text) {
    QString host;
    QString port;
    if (text.startsWith(u'[')) {
        const qsizetype close = text.indexOf(u']');
        if (close < 0 || text.mid(close + 1, 1) != QLatin1String(":"))
            return std::nullopt;
        host = text.mid(1, close - 1);
        port = text.mid(close + 2);
        if (QHostAddress(host).protocol() != QAbstractSocket::IPv6Protocol)
            return std::nullopt;
    } else {
        const qsizetype colon = text.indexOf(u':');
        if (colon < 0 || text.indexOf(u':', colon + 1) >= 0)
            return std::nullopt; // an IPv6 address goes in brackets
        host = text.left(colon);
        port = text.mid(colon + 1);
        // Digits and dots alone are an IPv4 address or nothing: "10.0.0.300" is no host name.
        const bool numeric = !host.isEmpty() && std::all_of(host.cbegin(), host.cend(),
                                                            [](QChar c) { return c.isDigit() || c == u'.'; });
        if (numeric ? host.count(u'.') != 3 || QHostAddress(host).protocol() != QAbstractSocket::IPv4Protocol
                    : !IsHostName(host))
            return std::nullopt;
    }
    const std::optional<quint16> number = PortOf(port);
    if (!number)
        return std::nullopt;
    return NetAddress{host, *number};
}

} // namespace kestrova
