#include "platform/LineCounters.h"

#include <gtest/gtest.h>

using namespace kestrova;

TEST(LineCounters, EveryPulseAndEveryBreakIsAnEvent) {
    using E = CommEvent;
    struct Case {
        LineCounters after; // from all zero
        QList<CommEvent> events;
    };
    const Case cases[] = {
        {{}, {}},
        {{2, 0, 0, 0}, {E::CtsChange}}, // a CTS pulse between two looks: its level looks the same
        {{0, 1, 0, 0}, {E::DsrChange}},
        {{0, 0, 3, 0}, {E::CdChange}},
        {{0, 0, 0, 2}, {E::Break, E::Break}},
        {{1, 2, 1, 1}, {E::CtsChange, E::DsrChange, E::CdChange, E::Break}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(EventsBetween({}, c.after), c.events);
}
