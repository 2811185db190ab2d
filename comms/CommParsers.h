#pragma once

#include <QChar>
#include <QList>
#include <QString>

namespace kestrova {

// The small parsers of the communication settings files. Each takes the value of its line
// (the text after the colon, trimmed) and gives what the readers keep.

// The serial control's handshaking code for a Handshake value: 1 for "XON" or "XOFF", plus 2
// for "RTS" or "CTS", anywhere in the text and in any letter case. "DSR" has no effect.
[[nodiscard]] int HandshakeCode(const QString& value);

// Whether a Handshake value asks for DTR (kept with the send settings only).
[[nodiscard]] bool HandshakeWantsDtr(const QString& value);

// How a send waits before it transmits.
enum class StartMode { Manual, Auto, Immediate, Event, Dsr, Cts, Any };

// The StartMode of a value. The tests are made in a fixed order and the first that holds
// decides, so "IMMEDIATE AUTO" is Auto and "EVENT DSR" is Event.
[[nodiscard]] StartMode ParseStartMode(const QString& value);

// The StartCharacter: "" when the value is empty; the character with the leading number's
// code when the value starts with a digit ("17" is DC1, "1A" is code 1); else the value's
// first character. Here and in sequences and lists, a code outside 0..255 is "Overflow".
[[nodiscard]] QString ParseStartCharacter(const QString& value);

// A character sequence written as count,code pairs: "1,13,1,10" is CR LF, "50,0" fifty NULs.
// An unpaired last number is ignored; text that is not a number counts as 0. A sequence of
// more than 65535 characters is the "Overflow" error.
[[nodiscard]] QString ParseSequence(const QString& value);

// A list of character codes separated by commas: "0,127" is NUL then DEL, "13" one CR.
[[nodiscard]] QList<QChar> ParseCharacterList(const QString& value);

// A number read with leading-number rules and rounded to the 32-bit integer; beyond its range
// the "Overflow" error.
[[nodiscard]] int RoundedNumber(const QString& value);

} // namespace kestrova
