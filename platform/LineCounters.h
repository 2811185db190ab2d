#pragma once

#include "platform/SerialLine.h"

#include <QList>

namespace kestrova {

// How often the device has seen each modem line change and a break received, as the kernel
// counts them (TIOCGICOUNT): a pulse shorter than the time between two looks still moves its
// counter, where the line's level would look unchanged.
struct LineCounters {
    int cts = 0;
    int dsr = 0;
    int dcd = 0;
    int brk = 0;
};

// The events between two readings of the counters, in the order CTS, DSR, CD, then one Break
// for each break received.
[[nodiscard]] QList<CommEvent> EventsBetween(const LineCounters& before, const LineCounters& after);

// The events between two readings of the levels alone (where no counts are kept): a changed
// level stands for one change.
[[nodiscard]] inline LineCounters LevelsAsCounters(bool cts, bool dsr, bool cd) {
    return {int(cts), int(dsr), int(cd), 0};
}

} // namespace kestrova
