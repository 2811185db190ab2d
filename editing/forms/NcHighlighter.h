#pragma once

#include <QSyntaxHighlighter>
#include <QTextCharFormat>

namespace kestrova {

// A plain colouring of NC program text: the block number at the head of a block ("N0010",
// after a "/" block delete), each address letter and its number ("G01", "X-10.5"), and
// comments in parentheses. Anything else is left as it is.
class NcHighlighter : public QSyntaxHighlighter {
    Q_OBJECT
public:
    explicit NcHighlighter(QTextDocument* document);

protected:
    void highlightBlock(const QString& text) override;

private:
    QTextCharFormat m_blockNumber;
    QTextCharFormat m_letter;
    QTextCharFormat m_number;
    QTextCharFormat m_comment;
};

} // namespace kestrova
