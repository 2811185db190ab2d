#include "editing/ProgramLines.h"

#include <charconv>
#include <cstring>

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

char* Put(QByteArrayView bytes, char* to) {
    if (!bytes.isEmpty())
        std::memcpy(to, bytes.data(), size_t(bytes.size()));
    return to + bytes.size();
}

// Runs a line rule that writes in place on the end of out.
template <typename Rule>
void AppendWith(QByteArray& out, qsizetype room, Rule rule) {
    const qsizetype at = out.size();
    out.resize(at + room);
    char* end = rule(out.data() + at);
    out.truncate(end - out.constData());
}

} // namespace

char* RemoveAllSpaces(QByteArrayView text, char* to) {
    // Copied in runs between blanks: most of a line is no blank.
    const char* from = text.data();
    const char* const end = from + text.size();
    while (from < end) {
        const void* blank = std::memchr(from, ' ', size_t(end - from));
        const char* stop = blank ? static_cast<const char*>(blank) : end;
        std::memcpy(to, from, size_t(stop - from));
        to += stop - from;
        from = stop + 1;
    }
    return to;
}

void RemoveAllSpaces(QByteArrayView text, QByteArray& out) {
    AppendWith(out, text.size(), [&](char* to) { return RemoveAllSpaces(text, to); });
}

char* StripLine(QByteArrayView line, char* to) {
    bool blockDelete = false;
    QByteArrayView block = SplitBlockDelete(TrimBlanks(line), blockDelete);
    if (!block.isEmpty() && (block.front() == 'N' || block.front() == 'n')) {
        qsizetype i = 0;
        while (i < block.size() && (block[i] == 'N' || block[i] == 'n' || IsDigit(block[i])))
            ++i;
        block = TrimBlanks(block.sliced(i));
    }
    if (blockDelete)
        *to++ = '/';
    return Put(block, to);
}

void StripLine(QByteArrayView line, QByteArray& out) {
    AppendWith(out, line.size(), [&](char* to) { return StripLine(line, to); });
}

BlockNumbers::BlockNumbers(Int16 start, Int16 increment, int width)
    : m_number(start), m_increment(increment), m_width(width) {
    Build();
}

void BlockNumbers::Build() {
    // The digits without sign position or blanks, padded on the left, never cut.
    char digits[8];
    const auto [end, error] = std::to_chars(digits, digits + sizeof digits, m_number.value());
    const qsizetype count = end - digits;
    const qsizetype zeros = count < m_width ? m_width - count : 0;
    m_nword.resize(1 + zeros + count + 1);
    char* to = m_nword.data();
    *to++ = 'N';
    std::memset(to, '0', size_t(zeros));
    std::memcpy(to + zeros, digits, size_t(count));
    to[zeros + count] = ' ';
}

char* BlockNumbers::Number(QByteArrayView line, char* to) const {
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
        *to++ = '/';
    return Put(block, Put(m_nword, to));
}

void BlockNumbers::Number(QByteArrayView line, QByteArray& out) const {
    AppendWith(out, line.size() + m_nword.size(), [&](char* to) { return Number(line, to); });
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
