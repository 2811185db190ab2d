#include "comms/SendProgress.h"

#include <QtGlobal>

namespace kestrova {

ProgressScale::ProgressScale(qint64 count)
    : m_count(qMax<qint64>(0, count)), m_perThousand(m_count > 30000),
      m_total(int(m_perThousand ? m_count / 1000 : m_count)) {}

int ProgressScale::StepsAfter(qint64 n, int stepsBefore) const {
    int steps = stepsBefore;
    if (!m_perThousand)
        ++steps;
    else if (n % 1000 == 0 || n == m_count)
        ++steps;
    return qMin(steps, m_total);
}

int ProgressScale::PercentOf(int steps) const {
    if (m_total <= 0)
        return 0;
    return int(qint64(steps) * 100 / m_total);
}

} // namespace kestrova
