#include "editing/forms/NcHighlighter.h"

namespace kestrova {

namespace {

bool IsLetter(QChar c) {
    return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z');
}

bool IsNumberChar(QChar c) {
    return (c >= u'0' && c <= u'9') || c == u'.' || c == u'-' || c == u'+';
}

} // namespace

NcHighlighter::NcHighlighter(QTextDocument* document) : QSyntaxHighlighter(document) {
    m_blockNumber.setForeground(QColor(0x1f, 0x4e, 0x9a));
    m_blockNumber.setFontWeight(QFont::Bold);
    m_letter.setForeground(QColor(0x8b, 0x1a, 0x1a));
    m_number.setForeground(QColor(0x1b, 0x6e, 0x2d));
    m_comment.setForeground(QColor(0x70, 0x70, 0x70));
    m_comment.setFontItalic(true);
}

void NcHighlighter::highlightBlock(const QString& text) {
    const qsizetype n = text.size();
    qsizetype i = 0;
    while (i < n && (text.at(i) == u' ' || text.at(i) == u'\t'))
        ++i;
    if (i < n && text.at(i) == u'/')
        ++i;
    while (i < n && text.at(i) == u' ')
        ++i;
    // The block number: "N" and its digits at the head of the block.
    if (i < n && (text.at(i) == u'N' || text.at(i) == u'n')) {
        qsizetype j = i + 1;
        while (j < n && text.at(j) >= u'0' && text.at(j) <= u'9')
            ++j;
        if (j > i + 1) {
            setFormat(int(i), int(j - i), m_blockNumber);
            i = j;
        }
    }
    while (i < n) {
        const QChar c = text.at(i);
        if (c == u'(') {
            qsizetype close = text.indexOf(u')', i + 1);
            close = close < 0 ? n : close + 1;
            setFormat(int(i), int(close - i), m_comment);
            i = close;
        } else if (IsLetter(c) && i + 1 < n && IsNumberChar(text.at(i + 1))) {
            qsizetype j = i + 1;
            while (j < n && IsNumberChar(text.at(j)))
                ++j;
            setFormat(int(i), 1, m_letter);
            setFormat(int(i + 1), int(j - i - 1), m_number);
            i = j;
        } else {
            ++i;
        }
    }
}

} // namespace kestrova
