#include "comms/TransferRate.h"

namespace kestrova {

namespace {

constexpr qint64 RefreshMs = 100; // ten times a second at most

} // namespace

void TransferRate::Start() {
    m_clock.start();
    m_shownAt = -1;
}

std::optional<QString> TransferRate::Update(qint64 done, qint64 total) {
    if (!m_clock.isValid())
        Start();
    const qint64 now = m_clock.elapsed();
    if (m_shownAt >= 0 && now - m_shownAt < RefreshMs)
        return std::nullopt;
    m_shownAt = now;
    return Text(done, total, now);
}

QString TransferRate::Text(qint64 done, qint64 total, qint64 elapsedMs) {
    QString text = QStringLiteral("%1 Bytes").arg(done);
    if (elapsedMs <= 0 || done <= 0)
        return text;
    const qint64 perSecond = done * 1000 / elapsedMs;
    text += QStringLiteral("  %1 Bytes/s").arg(perSecond);
    if (total > 0 && perSecond > 0) {
        const qint64 left = (qMax<qint64>(0, total - done) + perSecond - 1) / perSecond;
        text += QStringLiteral("  %1:%2 Left").arg(left / 60).arg(left % 60, 2, 10, QLatin1Char('0'));
    }
    return text;
}

} // namespace kestrova
