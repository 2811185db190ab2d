#pragma once

#include <QElapsedTimer>
#include <QString>
#include <optional>

namespace kestrova {

// What a transfer's form shows besides its count: bytes so far, bytes per second and, when the
// whole is known, the time left; refreshed no more than ten times a second.
class TransferRate {
public:
    // The transfer starts now.
    void Start();
    // The text for done bytes of total (0: not known) when a tenth of a second or more has
    // passed since the last one; nothing otherwise.
    [[nodiscard]] std::optional<QString> Update(qint64 done, qint64 total);

    // "1200 Bytes  960 Bytes/s  0:05 Left" after elapsedMs; without the time left when total is
    // 0, and without the rate before anything has been timed.
    [[nodiscard]] static QString Text(qint64 done, qint64 total, qint64 elapsedMs);

private:
    QElapsedTimer m_clock;
    qint64 m_shownAt = -1;
};

} // namespace kestrova
