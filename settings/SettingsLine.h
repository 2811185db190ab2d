#pragma once

#include "platform/Int16.h"

#include <QString>

namespace kestrova {

// The value of a settings line: the text after the first colon, trimmed; a line without a
// colon is its own value, trimmed. "Nesting ? (Yes / No)   : No" gives "No".
[[nodiscard]] QString ValueOfLine(QString line);

// True when the text holds a colon anywhere: such a text names a drive, never a plain name.
[[nodiscard]] bool HasColon(const QString& text);

// The ordinary leading-number conversion: blanks skipped, then a sign, digits, a decimal part
// and an exponent as far as they go. Text that does not start with a number gives 0.
[[nodiscard]] double LeadingNumber(const QString& text);

// The same, truncated towards zero to the 16-bit integer; outside its range the "Overflow" error.
[[nodiscard]] Int16 LeadingInt16(const QString& text);

} // namespace kestrova
