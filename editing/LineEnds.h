#pragma once

#include <QByteArray>

namespace kestrova {

// How a line of a text file ends. A file written by the system ends its lines in CR LF; files
// from elsewhere may mix in LF or CR alone, and their last line may have no end at all. An editor
// keeps each line's own end so that lines it did not touch are written back byte for byte.
enum class LineEnd : quint8 { CrLf, Lf, Cr, None };

// One line of a text held as bytes: where its text starts, how long it is, and how it ends.
struct LineSpan {
    qsizetype start = 0;
    qsizetype length = 0;
    LineEnd end = LineEnd::None;
};

// The line starting at from. A text that ends in a line end has one more, empty line after it,
// ended by nothing; so has an empty text. Every text is the concatenation of its lines and ends.
[[nodiscard]] LineSpan LineAt(const QByteArray& text, qsizetype from);

// The bytes of a line end.
[[nodiscard]] const char* LineEndBytes(LineEnd end);

} // namespace kestrova
