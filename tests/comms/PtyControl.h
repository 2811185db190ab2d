#pragma once

#include <QByteArray>
#include <QString>
#include <optional>
#include <termios.h>

namespace kestrova::testing {

// A machine control played by the test itself on the master side of a pseudo-terminal. The
// program reaches it through a link at a fixed host path (the device map's entry for the port),
// so that the device can be removed and put back under the same name, as a USB adapter is.
class PtyControl {
public:
    // Opens a pseudo-terminal pair and points the link at its device.
    explicit PtyControl(const QString& linkPath);
    ~PtyControl();
    PtyControl(const PtyControl&) = delete;
    PtyControl& operator=(const PtyControl&) = delete;

    void Write(const QByteArray& bytes);
    // Writes what the line takes now, without waiting; how many bytes that was.
    [[nodiscard]] qsizetype WriteSome(QByteArrayView bytes);
    // What the program has sent so far (waits up to ms for the first byte).
    [[nodiscard]] QByteArray Read(int ms = 0);
    // The program has the line open.
    [[nodiscard]] bool Opened() const;
    // The settings the device's user gave the pseudo-terminal.
    [[nodiscard]] std::optional<termios> Settings() const;
    // The device goes away: the line hangs up and the link is removed.
    void Remove();
    // Only the link goes (a device node removed): a line already open goes on working.
    void Unlink();

private:
    int m_master = -1;
    QString m_link;
};

} // namespace kestrova::testing
