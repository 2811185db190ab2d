#pragma once

#include "platform/Blanks.h"
#include "platform/Int16.h"

#include <QByteArray>
#include <QByteArrayView>

namespace kestrova {

// The line rules of the three program rewrites. Each takes one line of single-byte text
// without its line end and writes the line to write, either at `to` (which has room for the
// line and the N-word; the end is returned) or appended to out. "Trim" here removes blanks (the
// space character) only: tabs and every other character are kept, as NC controls treat them as
// data. They work on bytes in place because they run once for every line of programs of
// millions of lines.

// Every blank removed, wherever it stands.
char* RemoveAllSpaces(QByteArrayView text, char* to);
void RemoveAllSpaces(QByteArrayView text, QByteArray& out);

// A line of Strip Numbers: a leading "/" (block delete) is kept in front, then any run of "N",
// "n" and digits at the start of the block goes, and the rest is trimmed. Lines that do not
// start with a block number pass as they are, apart from the trim.
char* StripLine(QByteArrayView line, char* to);
void StripLine(QByteArrayView line, QByteArray& out);

// The block numbering of Renumber Program: the N-word of the running number ("N", its digits
// padded with "0" to the width, one blank) in front of each line, the old number removed.
// The running number is the system's 16-bit integer: advancing past 32767 is "Overflow".
class BlockNumbers {
public:
    BlockNumbers(Int16 start, Int16 increment, int width);

    // The N-word of the running number.
    [[nodiscard]] const QByteArray& NWord() const { return m_nword; }
    // The numbered line, trimmed: prefix "/" if the block is a block delete, the N-word, then
    // the block without its old number. Only an upper-case "N" with digits counts as the old
    // number: a block starting with "n" keeps its whole text.
    char* Number(QByteArrayView line, char* to) const;
    void Number(QByteArrayView line, QByteArray& out) const;
    // The next number: number + increment.
    void Advance();

private:
    void Build();

    Int16 m_number;
    Int16 m_increment;
    int m_width;
    QByteArray m_nword;
};

// The width of the block numbers from the start text: its length when, trimmed, it starts
// with "0" ("0010" gives 4, "0" gives 1), otherwise 0 (no padding).
[[nodiscard]] int NumberWidth(const QString& startText);

} // namespace kestrova
