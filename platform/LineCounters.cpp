#include "platform/LineCounters.h"

namespace kestrova {

QList<CommEvent> EventsBetween(const LineCounters& before, const LineCounters& after) {
    QList<CommEvent> events;
    if (after.cts != before.cts)
        events << CommEvent::CtsChange;
    if (after.dsr != before.dsr)
        events << CommEvent::DsrChange;
    if (after.dcd != before.dcd)
        events << CommEvent::CdChange;
    for (int n = before.brk; n != after.brk; ++n)
        events << CommEvent::Break;
    return events;
}

} // namespace kestrova
