#include "editing/ProgramLines.h"

namespace kestrova {

namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// The block without its leading "/", trimmed; blockDelete tells whether there was one.
QByteArrayView SplitBlockDelete(QByteArrayView line, bool& blockDelete) {
    blockDelete = !line.isEmpty() && line.front() == '/';
    return blockDelete ? TrimBlanks(line.sliced(1)) : line;
}

} // namespace

void RemoveAllSpaces(QByteArrayView text, QByteArray& out) {
    const qsizetype at = out.size();
    out.resize(at + text.size());
    char* to = out.data() + at;
    for (const char c : text)
        if (c != ' ')
            *to++ = c;
    out.truncate(to - out.constData());
}

void StripLine(QByteArrayView line, QByteArray& out) {
    bool blockDelete = false;
    QByteArrayView block = SplitBlockDelete(TrimBlanks(line), blockDelete);
    if (!block.isEmpty() && (block.front() == 'N' || block.front() == 'n')) {
        qsizetype i = 0;
        while (i < block.size() && (block[i] == 'N' || block[i] == 'n' || IsDigit(block[i])))
            ++i;
        block = TrimBlanks(block.sliced(i));
    }
    if (blockDelete)
        out.append('/');
    out.append(block);
}

BlockNumbers::BlockNumbers(Int16 start, Int16 increment, int width)
    : m_number(start), m_increment(increment), m_width(width) {
    Build();
}

void BlockNumbers::Build() {
    // The digits without sign position or blanks, padded on the left, never cut.
    const QByteArray digits = QByteArray::number(m_number.value());
    m_nword = "N";
    if (digits.size() < m_width)
        m_nword.append(QByteArray(m_width - digits.size(), '0'));
    m_nword.append(digits).append(' ');
}

void BlockNumbers::Number(QByteArrayView line, QByteArray& out) const {
    bool blockDelete = false;
    QByteArrayView block = SplitBlockDelete(TrimBlanks(line), blockDelete);
    // Upper case only: a block starting with "n" enters the walk and stops at once.
    if (!block.isEmpty() && (block.front() == 'N' || block.front() == 'n')) {
        qsizetype i = 0;
        while (i < block.size() && (block[i] == 'N' || IsDigit(block[i])))
            ++i;
        block = TrimBlanks(block.sliced(i));
    }
    if (blockDelete)
        out.append('/');
    out.append(m_nword).append(block);
}

void BlockNumbers::Advance() {
    m_number += m_increment;
    Build();
}

int NumberWidth(const QString& startText) {
    const QStringView trimmed = TrimBlanks(QStringView(startText));
    return trimmed.startsWith(u'0') ? int(trimmed.size()) : 0;
}

} // namespace kestrova
