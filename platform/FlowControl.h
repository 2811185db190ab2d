#pragma once

#include <QByteArray>

namespace kestrova {

// XON/XOFF done by the line itself: takes the XON and XOFF characters out of what arrived,
// leaving the last one's state in xoff (set while the far end holds the output back). True when
// any arrived.
[[nodiscard]] bool TakeFlowControl(QByteArray& arrived, bool& xoff);

} // namespace kestrova
