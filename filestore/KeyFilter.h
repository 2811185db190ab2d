#pragma once

#include "platform/MessageService.h"

#include <QString>

namespace kestrova {

// The key filter of the name, pattern and number boxes. Returns the key code when the key is
// accepted and 0 after the beep when it is refused. mode: -1 digits; -2 digits and "-"; -4
// digits and "."; -5 digits, "-" and "."; -6 arithmetic; -7 with "P"; -8 with letters; -80 short
// names of 8; -83 names with extension of 12; -32 names of 32; -321 of 36; -322 patterns of 36;
// -48 names of 48; N >= 1 names of N; any other value every key.
[[nodiscard]] int FilterNameKey(MessageService& messages, int keyCode, int mode, const QString& text,
                                int selectionLength);

// Whether the filter would have taken every character of a whole name typed into an empty box:
// what OK checks again, whatever way the text reached the box. Refused with InvalidFileName.
[[nodiscard]] bool NameFitsFilter(const QString& text, int mode);

// Whether a box may hold text at all: as NameFitsFilter, except that blanks in front are let
// be (the cursor may have been moved before the first character to type one; OK trims them).
// What the box checks when text arrives other than key by key (paste, drop, input method).
[[nodiscard]] bool BoxTextFitsFilter(const QString& text, int mode);

// The refusal of a name that does not fit its box's filter.
inline const QString InvalidFileName = QStringLiteral("Invalid File Name !");

} // namespace kestrova
