#pragma once

#include "InstallationFixture.h"

#include <QStringList>

namespace kestrova::bench {

// One installation for a whole benchmark run: 1,000 programs of about 4 KB, "PART0001" to
// "PART1000", in the data directory "Many" of the first machine.
[[nodiscard]] testing::InstallationFixture& ManyPrograms();

// The names of the first count of them, without extension.
[[nodiscard]] QStringList ManyProgramNames(int count = 1000);

} // namespace kestrova::bench
