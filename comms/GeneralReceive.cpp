#include "comms/GeneralReceive.h"

#include "comms/PortSetup.h"
#include "platform/ScreenText.h"
#include "platform/TextFile.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QScopeGuard>
#include <QStringView>
#include <memory>

namespace kestrova {

namespace {

constexpr char16_t Lf = 10;
constexpr char16_t Cr = 13;
const QString CrLf = QStringLiteral("\r\n");

void LetEventsRun() {
    QCoreApplication::processEvents(QEventLoop::AllEvents);
}

void WaitForEvent() {
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

} // namespace

GeneralReceive::GeneralReceive(SerialLine& line, QObject* parent)
    : QObject(parent), m_line(line), m_timeOut(this) {
    m_timeOut.setSingleShot(true);
    connect(&m_timeOut, &QTimer::timeout, this, [this] { TimeOut_Timer(); });
    connect(&m_line, &SerialLine::LineLost, this, &GeneralReceive::OnLineLost);
}

GeneralReceive::~GeneralReceive() = default;

void GeneralReceive::SetSettings(const ReceiveSettings& settings) {
    m_settings = settings;
    m_filtered.reset();
    for (const QChar c : m_settings.ReceiveFilter)
        if (const int byte = ByteOfScreenChar(c); byte >= 0)
            m_filtered.set(size_t(byte));
}

void GeneralReceive::Publish(const ReceiveDisplay& next) {
    if (next == m_display)
        return;
    m_display = next;
    Q_EMIT DisplayChanged();
}

void GeneralReceive::RestartTimeOut() {
    // An interval of 0 leaves the timer stopped: no time-out at all.
    m_timeOut.stop();
    if (m_settings.ReceiveTimeOut > 0)
        m_timeOut.start(m_settings.ReceiveTimeOut);
}

void GeneralReceive::StopTimeOut() {
    m_timeOut.stop();
}

void GeneralReceive::OnLineLost(const QString& message) {
    // The line is closed already; what came so far is incomplete and is not kept.
    m_lostMessage = message;
    m_aborted = true;
}

void GeneralReceive::Run(FileSystem& files, const QString& name, const QString& tempPath) {
    m_aborted = false;
    m_timedOut = false;
    m_characterCount = 0;
    m_lostMessage.clear();

    ReceiveDisplay d;
    d.EntryVisible = false;
    d.Label = name + QStringLiteral("\n\nWaiting To Receive");
    d.LabelVisible = true;
    d.AbortVisible = true;
    Publish(d);
    LetEventsRun();

    auto out = std::make_unique<TextWriter>(files, tempPath, TextWriter::Mode::Create);
    bool completed = false;
    auto cleanUp = qScopeGuard([&] {
        // Reached with completed false only by an error: nothing of this receive is kept.
        if (completed)
            return;
        StopTimeOut();
        try {
            out.reset();
            if (m_line.PortOpen())
                m_line.SetPortOpen(false);
            if (files.IsFile(tempPath))
                files.Delete(tempPath);
        } catch (const std::exception&) {
            // The error on its way out is the one to report.
        }
        Publish(ReceiveDisplay{}); // back to entering the name
    });

    PreparePort(m_line, PortSetupFor(TransferKind::GeneralReceive, m_settings.Port, m_settings.Settings,
                                     m_settings.Handshaking));
    if (!m_settings.StartCharacter.isEmpty())
        m_line.Output(m_settings.StartCharacter); // asks the control to start

    const QString& trailer = m_settings.Trailer;
    QString trailerMatch;
    QChar previous;
    QChar last;
    bool lineEndWritten = false;
    bool firstData = true;
    bool leave = false;
    while (!leave) {
        LetEventsRun();
        if (m_timedOut)
            break;
        // Until the first character there is no time-out: only the operator ends the wait.
        if (!m_aborted && m_line.InBufferCount() == 0) {
            WaitForEvent();
            continue;
        }
        if (m_timedOut || m_aborted)
            break;
        if (firstData) {
            firstData = false;
            d.Label = name + QStringLiteral("\n\nReceiving");
            d.Chars = QString::number(m_characterCount);
            d.CharsVisible = true;
            Publish(d);
            m_rate.Start();
        }
        RestartTimeOut();
        const QString waiting = m_line.Input();
        for (const QChar c : waiting) {
            RestartTimeOut();
            previous = last;
            last = c;
            QString written(c);
            bool filtered = false;
            if (const int byte = ByteOfScreenChar(c); byte >= 0 && m_filtered.test(size_t(byte))) {
                filtered = true;
                written.clear();
            }
            // CR, LF, CR LF and LF CR each become one CR LF. The filter does not stop a CR or LF
            // from counting as a line end written, so its partner after it is dropped too.
            if (c == QChar(Lf) || c == QChar(Cr)) {
                const QChar partner = c == QChar(Lf) ? QChar(Cr) : QChar(Lf);
                if (previous == partner && lineEndWritten) {
                    written.clear();
                    filtered = true;
                    lineEndWritten = false;
                } else {
                    written = CrLf;
                    lineEndWritten = true;
                }
            } else {
                lineEndWritten = false;
            }
            trailerMatch += c;
            if (QStringView(trailer).left(trailerMatch.size()) != trailerMatch)
                trailerMatch.clear();
            LetEventsRun();
            if (m_timedOut || m_aborted) {
                leave = true;
                break;
            }
            if (!written.isEmpty() && !filtered) {
                out->Write(written);
                ++m_characterCount;
                d.Chars = QString::number(m_characterCount);
                if (const std::optional<QString> rate = m_rate.Update(m_characterCount, 0))
                    d.Rate = *rate;
                Publish(d);
            }
            if (!trailer.isEmpty() && trailerMatch == trailer) {
                leave = true; // the trailer ends the program; all of it is in the file
                break;
            }
        }
    }

    out->Close();
    out.reset();
    StopTimeOut();
    if (m_line.PortOpen())
        m_line.SetPortOpen(false);
    completed = true;

    if (!files.IsFile(tempPath) || files.Length(tempPath) == 0)
        m_aborted = true;
    // A program cut off by a device server's dropped connection stays for the caller to keep.
    const bool cutOff = !m_lostMessage.isEmpty() && m_line.OnDeviceServer();
    if (m_aborted && !cutOff && files.IsFile(tempPath))
        files.Delete(tempPath);
}

} // namespace kestrova
