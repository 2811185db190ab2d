#include "PtyControl.h"

#include <QFile>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <termios.h>
#include <unistd.h>

namespace kestrova::testing {

PtyControl::PtyControl(const QString& linkPath) : m_link(linkPath) {
    m_master = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (m_master < 0 || ::grantpt(m_master) != 0 || ::unlockpt(m_master) != 0)
        throw std::runtime_error("no pseudo-terminal");
    termios t{};
    if (::tcgetattr(m_master, &t) == 0) {
        ::cfmakeraw(&t);
        ::tcsetattr(m_master, TCSANOW, &t);
    }
    // The master reports a hang-up only once its device has been closed: a device never opened
    // looks open. Opened and closed once here, Opened() holds only while the program has it.
    const int device = ::open(::ptsname(m_master), O_RDWR | O_NOCTTY);
    if (device >= 0)
        ::close(device);
    QFile::remove(m_link);
    if (!QFile::link(QString::fromLocal8Bit(::ptsname(m_master)), m_link))
        throw std::runtime_error("cannot link the pseudo-terminal");
}

PtyControl::~PtyControl() {
    Remove();
}

void PtyControl::Write(const QByteArray& bytes) {
    // Waits for room without spinning; a line that takes nothing for ten seconds (a program
    // that does not read while this waits) fails the test instead of hanging it.
    qsizetype done = 0;
    int idleMs = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(m_master, bytes.constData() + done, size_t(bytes.size() - done));
        if (n < 0 && errno != EINTR && errno != EAGAIN)
            throw std::runtime_error("write to the pseudo-terminal failed");
        if (n > 0) {
            done += n;
            idleMs = 0;
            continue;
        }
        pollfd p{m_master, POLLOUT, 0};
        if (::poll(&p, 1, 100) == 0 && (idleMs += 100) >= 10000)
            throw std::runtime_error("the pseudo-terminal takes nothing");
    }
}

qsizetype PtyControl::WriteSome(QByteArrayView bytes) {
    const ssize_t n = ::write(m_master, bytes.constData(), size_t(bytes.size()));
    if (n < 0 && errno != EINTR && errno != EAGAIN)
        throw std::runtime_error("write to the pseudo-terminal failed");
    return n > 0 ? n : 0;
}

QByteArray PtyControl::Read(int ms) {
    QByteArray got;
    pollfd p{m_master, POLLIN, 0};
    if (::poll(&p, 1, ms) <= 0 || !(p.revents & POLLIN))
        return got;
    char buffer[4096];
    for (;;) {
        const ssize_t n = ::read(m_master, buffer, sizeof buffer);
        if (n <= 0)
            break;
        got.append(buffer, n);
    }
    return got;
}

bool PtyControl::Opened() const {
    if (m_master < 0)
        return false;
    pollfd p{m_master, POLLIN, 0};
    return ::poll(&p, 1, 0) >= 0 && !(p.revents & POLLHUP);
}

std::optional<termios> PtyControl::Settings() const {
    // The master reads the terminal's settings as its device side has them.
    termios t{};
    if (m_master < 0 || ::tcgetattr(m_master, &t) != 0)
        return std::nullopt;
    return t;
}

void PtyControl::Unlink() {
    QFile::remove(m_link);
}

void PtyControl::Remove() {
    if (m_master < 0)
        return; // gone already; the link may be another control's by now
    ::close(m_master);
    m_master = -1;
    QFile::remove(m_link);
}

} // namespace kestrova::testing
