#pragma once

#include "platform/NetLink.h"

#include <QByteArray>
#include <QTimer>
#include <memory>

struct gensio;
struct sergensio;
struct sergensio_b;
struct gensio_waiter;

namespace kestrova {

// A Telnet connection with the COM port option (RFC 2217) to a device server, through libgensio
// run by Qt's loop (GensioLoop): the line's framing, flow control and DTR and RTS levels are
// sent to the device server, which reports CTS, DSR and CD back.
class Rfc2217Link final : public NetLink {
    Q_OBJECT
public:
    explicit Rfc2217Link(QObject* parent = nullptr);
    ~Rfc2217Link() override;

    [[nodiscard]] bool ConnectNow(const NetAddress& address, int ms, QString& reason) override;
    void ConnectLater(const NetAddress& address) override;
    [[nodiscard]] qsizetype Write(const QByteArray& bytes) override;
    [[nodiscard]] qint64 Queued() const override { return m_pending.size(); }
    [[nodiscard]] bool Apply(const LineFraming& framing, int handshaking, bool dtr, bool rts,
                             QString& reason) override;
    [[nodiscard]] bool ModemLinesReported() const override { return m_linesReported; }
    [[nodiscard]] bool Reusable() const override { return m_unanswered == 0; }

private:
    struct GensioFree {
        void operator()(gensio* io) const;
    };
    struct BlockingFree {
        void operator()(sergensio_b* b) const;
    };

    // Makes the gensio and starts opening it; false with the reason when it cannot start.
    [[nodiscard]] bool Start(const NetAddress& address, QString& reason);
    void Opened(int error);
    // The library's calls for m_io reach this link no more.
    void Forget();
    void Drop(const QString& reason);
    // Hands what was written to the library, as far as it takes it.
    void Flush();
    static int OnEvent(gensio* io, void* self, int event, int error, unsigned char* buf,
                       unsigned long* length, const char* const* auxdata);
    static void OnOpenDone(gensio* io, int error, void* self);
    static void OnLevelAnswered(sergensio* sio, int error, unsigned level, void* self);

    std::unique_ptr<gensio, GensioFree> m_io;
    std::unique_ptr<sergensio_b, BlockingFree> m_blocking;
    bool m_opening = false;
    bool m_open = false;
    int m_openError = 0;
    gensio_waiter* m_openWait = nullptr; // woken when the opening ends, while ConnectNow waits
    bool m_dropped = false;
    bool m_linesReported = false;
    QByteArray m_pending; // written, not yet taken by the library
    QTimer m_flush;
    int m_unanswered = 0; // modem-control levels sent and not yet answered
};

} // namespace kestrova
