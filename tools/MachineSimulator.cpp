// kestrova-machine: a simulated machine control on a pseudo-terminal, for the tests and the demo.
//
// It opens a pseudo-terminal pair, prints the device that the program is to use, can enter it in
// a device map, and then carries out commands in order: from the command line, one argument
// each, and with --commands also from standard input, one per line. After each command it
// prints "ok <command>" (or "error <what>"), so that a driver can keep in step with it.
//
//   kestrova-machine [--devices FILE --port N] [--commands] [COMMAND ...]
//
//   wait-open [MS]      wait until the far end opens the line (at most MS ms)
//   wait-close          stay on the line until the far end closes it
//   sleep MS            wait
//   send FILE [header=MACHINE,DIR,NAME] [trailer=PAIRS] [chunk=N] [pace=MS] [hangup-after=N]
//                       send a program file: optionally the three header lines first (ETB
//                       machine, CAN directory, EM name, each ended by CR LF), then the file as
//                       it is, then the trailer (count,code pairs as in the settings files), in
//                       writes of N bytes with MS ms between them; hangup-after ends the line
//                       after that many bytes (and hangup-delay=MS, default 300, to let the
//                       far end read them), in the middle of the stream
//   receive FILE [start=CODE] [ack=CODE] [xoff-at=N] [xon-after=MS] [trailer=PAIRS] [idle=MS]
//               [pace=BAUD] [hangup-after=N] [reopen=MS]
//                       wait for a program and record every byte received to FILE: first send
//                       the start character (17 is XON) if asked; answer "7" after each
//                       character CODE (a line end) if asked; send XOFF after N bytes and XON
//                       MS ms later if asked, and report "held <n>": the bytes that still came
//                       from 100 ms after the XOFF until the XON; read no faster than a line of
//                       BAUD baud carries (ten bits a character) if asked; end the line after
//                       N bytes if asked; stop at the trailer, after MS ms of silence once
//                       something came (default 2000), or when the far end closes; with
//                       reopen, a line closed before anything came that stays closed MS ms
//                       ends it
//   serve FILE RECORD [start=CODE] [trailer=PAIRS] [listen=MS]
//                       a machine that both sends and receives on one line, as an operator uses
//                       it: every time the far end opens the line, listen MS ms (default 500);
//                       when the far end gives the start character (default 17) it wants a
//                       program, and FILE is sent with the trailer (default 1,37); when it stays
//                       silent it waits to send, so the machine gives the start character and
//                       records what comes to RECORD-<n>.nc. Then it waits for the close and
//                       serves the next opening, until the line ends
//   hangup              close the line and end
//   quit                end
#include "comms/CommParsers.h"
#include "platform/TextFile.h"

#include <QByteArray>
#include <QFile>
#include <QRegularExpression>
#include <QString>
#include <QStringList>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <map>
#include <optional>
#include <poll.h>
#include <string>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace {

const char* const Usage =
    "kestrova-machine [--devices FILE --port N] [--commands] [COMMAND ...]\n"
    "  A simulated machine control on a pseudo-terminal. Prints \"device <path>\", enters the\n"
    "  device as COM<N> in the device map FILE if asked, then runs the commands (one argument\n"
    "  each, and with --commands one per line of standard input), printing \"ok <command>\".\n"
    "  wait-open [MS]   wait until the far end opens the line\n"
    "  wait-close       stay on the line until the far end closes it\n"
    "  sleep MS\n"
    "  send FILE [header=MACHINE,DIR,NAME] [trailer=PAIRS] [chunk=N] [pace=MS]\n"
    "               [hangup-after=N] [hangup-delay=MS]\n"
    "  receive FILE [start=CODE] [ack=CODE] [xoff-at=N] [xon-after=MS] [trailer=PAIRS] [idle=MS]\n"
    "               [pace=BAUD] [hangup-after=N] [reopen=MS]\n"
    "  serve FILE RECORD [start=CODE] [trailer=PAIRS] [listen=MS]\n"
    "  hangup | quit\n";

using Clock = std::chrono::steady_clock;

class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

void Say(const std::string& line) {
    std::cout << line << std::endl; // flushed: a driver waits for it
}

void SleepMs(long ms) {
    if (ms > 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

// The command's words: the verb, plain arguments and key=value options.
struct Command {
    QString verb;
    QStringList args;
    std::map<QString, QString> options;

    [[nodiscard]] std::optional<QString> Option(const char* key) const {
        const auto it = options.find(QString::fromLatin1(key));
        return it == options.end() ? std::nullopt : std::optional<QString>(it->second);
    }
    [[nodiscard]] long Number(const char* key, long fallback) const {
        const auto v = Option(key);
        if (!v)
            return fallback;
        bool ok = false;
        const long n = v->toLong(&ok);
        if (!ok)
            throw Failure("not a number: " + std::string(key) + "=" + v->toStdString());
        return n;
    }
};

// Words are separated by blanks; a word in double quotes may hold blanks ("send \"a b.nc\"").
QStringList Words(const QString& text) {
    QStringList words;
    QString word;
    bool quoted = false;
    bool any = false;
    for (const QChar c : text) {
        if (c == u'"') {
            quoted = !quoted;
            any = true;
        } else if (c.isSpace() && !quoted) {
            if (any)
                words << word;
            word.clear();
            any = false;
        } else {
            word += c;
            any = true;
        }
    }
    if (any)
        words << word;
    return words;
}

Command Parse(const QString& text) {
    Command c;
    const QStringList words = Words(text);
    for (qsizetype i = 0; i < words.size(); ++i) {
        if (i == 0) {
            c.verb = words.at(0);
            continue;
        }
        const qsizetype eq = words.at(i).indexOf(u'=');
        if (eq > 0)
            c.options[words.at(i).left(eq)] = words.at(i).mid(eq + 1);
        else
            c.args << words.at(i);
    }
    return c;
}

QByteArray Sequence(const QString& pairs) {
    return kestrova::ToBytes(kestrova::ParseSequence(pairs));
}

class Machine {
public:
    Machine() {
        m_master = posix_openpt(O_RDWR | O_NOCTTY);
        if (m_master < 0 || grantpt(m_master) != 0 || unlockpt(m_master) != 0)
            throw Failure(std::string("cannot open a pseudo-terminal: ") + std::strerror(errno));
        m_device = ptsname(m_master);
        // Raw both ways until the program sets the line up itself: no echo, no line editing,
        // no CR/LF translation.
        termios t{};
        if (tcgetattr(m_master, &t) == 0) {
            cfmakeraw(&t);
            tcsetattr(m_master, TCSANOW, &t);
        }
        // The master reports a hang-up only once its device has been closed: a device never
        // opened looks open. Opened and closed once here, the line reads as closed until the
        // far end really opens it, so that the control never asks before anyone listens.
        const int device = ::open(m_device.c_str(), O_RDWR | O_NOCTTY);
        if (device >= 0)
            ::close(device);
    }
    ~Machine() { HangUp(); }

    [[nodiscard]] const std::string& Device() const { return m_device; }

    void HangUp() {
        if (m_master >= 0)
            ::close(m_master);
        m_master = -1;
    }

    // Until the far end has the line open, the master side reports a hang-up.
    void WaitOpen(long limitMs) {
        const auto until =
            Clock::now() + std::chrono::milliseconds(limitMs < 0 ? 1000L * 3600 * 24 : limitMs);
        while (Clock::now() < until) {
            pollfd p{m_master, POLLIN, 0};
            if (::poll(&p, 1, 0) >= 0 && !(p.revents & POLLHUP))
                return;
            SleepMs(10);
        }
        throw Failure("the line was not opened in time");
    }

    // Until the far end closes the line again; what it sends meanwhile is read and dropped.
    void WaitClose() {
        for (;;) {
            pollfd p{m_master, POLLIN, 0};
            if (::poll(&p, 1, 200) < 0 && errno != EINTR)
                return;
            if (p.revents & POLLHUP)
                return;
            if (p.revents & POLLIN) {
                char buffer[4096];
                if (::read(m_master, buffer, sizeof buffer) < 0 && errno != EINTR && errno != EAGAIN)
                    return;
            }
        }
    }

    void Write(const QByteArray& bytes) {
        qsizetype done = 0;
        while (done < bytes.size()) {
            const ssize_t n = ::write(m_master, bytes.constData() + done, size_t(bytes.size() - done));
            if (n < 0) {
                if (errno == EINTR)
                    continue;
                throw Failure(std::string("write: ") + std::strerror(errno));
            }
            done += n;
        }
    }

    void Send(const Command& c) {
        if (c.args.isEmpty())
            throw Failure("send needs a file");
        QFile f(c.args.first());
        if (!f.open(QIODevice::ReadOnly))
            throw Failure("cannot read " + c.args.first().toStdString());
        QByteArray stream;
        if (const auto header = c.Option("header")) {
            const QStringList parts = header->split(u',');
            const char markers[] = {23, 24, 25};
            for (qsizetype i = 0; i < 3; ++i)
                stream += QByteArray(1, markers[i]) + kestrova::ToBytes(parts.value(i)) + "\r\n";
        }
        stream += f.readAll();
        if (const auto trailer = c.Option("trailer"))
            stream += Sequence(*trailer);
        const long chunk = std::max(1L, c.Number("chunk", 4096));
        const long pace = c.Number("pace", 0);
        const long hangupAfter = c.Number("hangup-after", -1);
        if (hangupAfter >= 0 && hangupAfter < stream.size())
            stream.truncate(hangupAfter);
        for (qsizetype at = 0; at < stream.size(); at += chunk) {
            if (at > 0)
                SleepMs(pace);
            Write(stream.mid(at, chunk));
        }
        if (hangupAfter >= 0) {
            // Closing the master side throws away what the far end has not read yet; give it
            // a moment to read the part that was sent.
            SleepMs(c.Number("hangup-delay", 300));
            HangUp();
        }
    }

    void Receive(const Command& c) {
        if (c.args.isEmpty())
            throw Failure("receive needs a file");
        QFile out(c.args.first());
        if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate))
            throw Failure("cannot write " + c.args.first().toStdString());
        const long idle = c.Number("idle", 2000);
        const long ack = c.Number("ack", -1);
        const long xoffAt = c.Number("xoff-at", -1);
        const long xonAfter = c.Number("xon-after", 500);
        const QByteArray trailer = c.Option("trailer") ? Sequence(*c.Option("trailer")) : QByteArray();
        const long pace = c.Number("pace", 0);
        const long hangupAfter = c.Number("hangup-after", -1);
        if (const auto start = c.Option("start"))
            Write(QByteArray(1, char(start->toInt())));

        QByteArray got;
        bool xoffSent = false;
        bool xonPending = false;
        Clock::time_point xonDue{};
        Clock::time_point holdFrom{};
        long held = 0;
        const auto began = Clock::now();
        auto last = Clock::now();
        bool closed = false;
        Clock::time_point closedSince{};
        for (;;) {
            if (xonPending && Clock::now() >= xonDue) {
                Write(QByteArray(1, char(17)));
                xonPending = false;
            }
            // At a paced line's speed only as many bytes as the time so far allows.
            size_t room = 4096;
            if (pace > 0) {
                const auto ms =
                    std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - began).count();
                const long long allowed = static_cast<long long>(ms) * pace / 10000 + 1 - got.size();
                if (allowed <= 0) {
                    SleepMs(5);
                    continue;
                }
                room = size_t(std::min<long long>(allowed, 4096));
            }
            pollfd p{m_master, POLLIN, 0};
            const int ready = ::poll(&p, 1, 20);
            if (ready < 0 && errno != EINTR)
                throw Failure(std::string("poll: ") + std::strerror(errno));
            if (ready > 0 && (p.revents & POLLIN)) {
                char buffer[4096];
                const ssize_t n = ::read(m_master, buffer, room);
                if (n > 0) {
                    last = Clock::now();
                    if (xonPending && last >= holdFrom)
                        held += n;
                    for (ssize_t i = 0; i < n; ++i) {
                        got += buffer[i];
                        out.putChar(buffer[i]);
                        if (ack >= 0 && buffer[i] == char(ack))
                            Write("7");
                        if (xoffAt >= 0 && !xoffSent && got.size() >= xoffAt) {
                            Write(QByteArray(1, char(19)));
                            xoffSent = true;
                            xonPending = true;
                            xonDue = Clock::now() + std::chrono::milliseconds(xonAfter);
                            holdFrom = Clock::now() + std::chrono::milliseconds(100);
                        }
                    }
                    if (hangupAfter >= 0 && got.size() >= hangupAfter) {
                        HangUp(); // what came is recorded; the line ends here
                        break;
                    }
                    if (!trailer.isEmpty() && got.endsWith(trailer))
                        break;
                    continue;
                }
            }
            if (ready > 0 && (p.revents & POLLHUP) && !got.isEmpty())
                break; // the far end closed: what came is all there is
            if (!got.isEmpty() && Clock::now() - last > std::chrono::milliseconds(idle) && !xonPending)
                break;
            if (ready > 0 && (p.revents & POLLHUP)) {
                // Not open (yet, or again: a send closes and reopens the line once it starts).
                // A line that was open and stays closed has given up without a program.
                if (!closed)
                    closedSince = Clock::now();
                closed = true;
                const long reopen = c.Number("reopen", -1);
                if (reopen >= 0 && Clock::now() - closedSince > std::chrono::milliseconds(reopen))
                    break;
                SleepMs(10);
            } else {
                closed = false;
            }
        }
        out.close();
        if (xoffSent)
            Say("held " + std::to_string(held));
        Say("received " + std::to_string(got.size()));
    }

    // Listens up to ms for the start character; true when it came.
    bool Asked(char start, long ms) {
        const auto until = Clock::now() + std::chrono::milliseconds(ms);
        while (Clock::now() < until) {
            pollfd p{m_master, POLLIN, 0};
            if (::poll(&p, 1, 20) > 0 && (p.revents & POLLIN)) {
                char buffer[256];
                const ssize_t n = ::read(m_master, buffer, sizeof buffer);
                for (ssize_t i = 0; i < n; ++i)
                    if (buffer[i] == start)
                        return true;
            }
        }
        return false;
    }

    void Serve(const Command& c) {
        if (c.args.size() < 2)
            throw Failure("serve needs a program file and a record stem");
        const long start = c.Number("start", 17);
        const QString trailer = c.Option("trailer").value_or(QStringLiteral("1,37"));
        for (int n = 1; m_master >= 0; ++n) {
            WaitOpen(-1);
            if (Asked(char(start), c.Number("listen", 500))) {
                Command send;
                send.args << c.args.at(0);
                send.options[QStringLiteral("trailer")] = trailer;
                Send(send);
                Say("served a program");
            } else {
                Command receive;
                receive.args << QStringLiteral("%1-%2.nc").arg(c.args.at(1)).arg(n);
                receive.options[QStringLiteral("start")] = QString::number(start);
                receive.options[QStringLiteral("trailer")] = trailer;
                receive.options[QStringLiteral("reopen")] = QStringLiteral("2000");
                Receive(receive);
            }
            WaitClose();
        }
    }

    // Carries one command out; false when the machine is to end.
    bool Run(const Command& c) {
        if (c.verb == "wait-open")
            WaitOpen(c.args.isEmpty() ? -1 : c.args.first().toLong());
        else if (c.verb == "wait-close")
            WaitClose();
        else if (c.verb == "sleep")
            SleepMs(c.args.value(0).toLong());
        else if (c.verb == "send")
            Send(c);
        else if (c.verb == "receive")
            Receive(c);
        else if (c.verb == "serve")
            Serve(c);
        else if (c.verb == "hangup") {
            HangUp();
            return false;
        } else if (c.verb == "quit")
            return false;
        else
            throw Failure("unknown command: " + c.verb.toStdString());
        return m_master >= 0;
    }

private:
    int m_master = -1;
    std::string m_device;
};

// Enters "COMn port <device>" in a device map, replacing an entry for the same port and
// keeping the end marker last.
void EnterInDeviceMap(const QString& path, int port, const std::string& device) {
    QFile f(path);
    QStringList lines;
    if (f.open(QIODevice::ReadOnly))
        lines = QString::fromLatin1(f.readAll()).split(QRegularExpression(QStringLiteral("\r?\n")));
    f.close();
    const QString com = QStringLiteral("COM%1").arg(port);
    QStringList kept;
    for (const QString& line : lines) {
        const QString first = line.simplified().section(u' ', 0, 0);
        if (line.trimmed().isEmpty() || line.trimmed() == QLatin1String("******") ||
            first.compare(com, Qt::CaseInsensitive) == 0)
            continue;
        kept << line;
    }
    kept << com + QStringLiteral(" port ") + QString::fromStdString(device) << QStringLiteral("******");
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        throw Failure("cannot write " + path.toStdString());
    f.write((kept.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n")).toLatin1());
}

} // namespace

int main(int argc, char** argv) {
    try {
        QString devices;
        int port = 1;
        bool fromInput = false;
        QStringList commands;
        for (int i = 1; i < argc; ++i) {
            const QString a = QString::fromLocal8Bit(argv[i]);
            if (a == "--devices" && i + 1 < argc)
                devices = QString::fromLocal8Bit(argv[++i]);
            else if (a == "--port" && i + 1 < argc)
                port = QString::fromLocal8Bit(argv[++i]).toInt();
            else if (a == "--commands")
                fromInput = true;
            else if (a == "--help" || a == "-h") {
                std::cout << Usage;
                return 0;
            } else
                commands << a;
        }
        Machine machine;
        if (!devices.isEmpty())
            EnterInDeviceMap(devices, port, machine.Device());
        Say("device " + machine.Device());
        auto run = [&machine](const QString& text) {
            const Command c = Parse(text);
            if (c.verb.isEmpty())
                return true;
            try {
                const bool more = machine.Run(c);
                Say("ok " + c.verb.toStdString());
                return more;
            } catch (const Failure& e) {
                Say(std::string("error ") + e.what());
                return true;
            }
        };
        for (const QString& c : commands)
            if (!run(c))
                return 0;
        if (fromInput) {
            std::string line;
            while (std::getline(std::cin, line))
                if (!run(QString::fromStdString(line)))
                    return 0;
        }
        return 0;
    } catch (const std::exception& e) {
        std::cerr << "kestrova-machine: " << e.what() << std::endl;
        return 1;
    }
}
