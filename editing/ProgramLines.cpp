#include "editing/ProgramLines.h"

namespace kestrova {

namespace {

bool IsDigit(QChar c) {
    return c >= u'0' && c <= u'9';
}

// The block without its leading "/", trimmed, and the prefix it leaves ("/" or nothing).
QStringView SplitBlockDelete(QStringView line, bool& blockDelete) {
    blockDelete = !line.isEmpty() && line.front() == u'/';
    return blockDelete ? TrimBlanks(line.mid(1)) : line;
}

} // namespace

QString RemoveAllSpaces(QStringView text) {
    QString result;
    result.reserve(text.size());
    for (const QChar c : text)
        if (c != u' ')
            result.append(c);
    return result;
}

QString StripLine(QStringView line) {
    bool blockDelete = false;
    QStringView block = SplitBlockDelete(TrimBlanks(line), blockDelete);
    if (!block.isEmpty() && (block.front() == u'N' || block.front() == u'n')) {
        qsizetype i = 0;
        while (i < block.size() && (block[i] == u'N' || block[i] == u'n' || IsDigit(block[i])))
            ++i;
        block = TrimBlanks(block.mid(i));
    }
    return blockDelete ? u'/' + block.toString() : block.toString();
}

BlockNumbers::BlockNumbers(Int16 start, Int16 increment, int width)
    : m_number(start), m_increment(increment), m_width(width) {
    Build();
}

void BlockNumbers::Build() {
    // The digits without sign position or blanks, padded on the left, never cut.
    QString digits = QString::number(m_number.value());
    if (digits.size() < m_width)
        digits.prepend(QString(m_width - digits.size(), u'0'));
    m_nword = u'N' + digits + u' ';
}

QString BlockNumbers::Number(QStringView line) const {
    bool blockDelete = false;
    QStringView block = SplitBlockDelete(TrimBlanks(line), blockDelete);
    // Upper case only: a block starting with "n" enters the walk and stops at once.
    if (!block.isEmpty() && (block.front() == u'N' || block.front() == u'n')) {
        qsizetype i = 0;
        while (i < block.size() && (block[i] == u'N' || IsDigit(block[i])))
            ++i;
        block = TrimBlanks(block.mid(i));
    }
    QString result;
    result.reserve(1 + m_nword.size() + block.size());
    if (blockDelete)
        result.append(u'/');
    result.append(m_nword);
    result.append(block);
    return result;
}

void BlockNumbers::Advance() {
    m_number += m_increment;
    Build();
}

int NumberWidth(const QString& startText) {
    const QStringView trimmed = TrimBlanks(startText);
    return !trimmed.isEmpty() && trimmed.front() == u'0' ? int(trimmed.size()) : 0;
}

} // namespace kestrova
