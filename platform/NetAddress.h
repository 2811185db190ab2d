#pragma once

#include <QString>
#include <optional>

namespace kestrova {

// Where a serial device server listens: a host name or an IPv4 or IPv6 address, and a TCP port.
struct NetAddress {
    QString host; // without the brackets of an IPv6 address
    quint16 port = 0;

    // "host:port", an IPv6 address in brackets: "[::1]:2217".
    [[nodiscard]] QString Text() const;

    friend bool operator==(const NetAddress&, const NetAddress&) = default;
};

// The address written as HOST:PORT ("shop-ds1:4001", "10.0.0.7:4001", "[fe80::2]:2217"); nothing
// when the host is not a name or an address, or the port is not 1 to 65535.
[[nodiscard]] std::optional<NetAddress> ParseNetAddress(const QString& text);

} // namespace kestrova
