#pragma once

#include "Frontend/GlobalSettings.h"

namespace kestrova {

// Sets the machine-type fields from the control type (line 1 of the machine's "cms" file) and the
// machine's description. Every test is a plain substring test on the upper-cased texts, so a
// short key such as "RT" or "85" matches anywhere, as the suite has always read them.
void SetMachineType(GlobalSettings& g, const QString& controlType, const QString& description);

} // namespace kestrova
