#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

namespace kestrova {

// Text without its leading and trailing blanks (spaces). Nothing else goes: a tab, vertical
// tab, form feed, NEL or no-break space is a character that a settings line, a name or a
// program line may hold, and stays.
[[nodiscard]] inline QStringView TrimBlanks(QStringView text) {
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && text[begin] == u' ')
        ++begin;
    while (end > begin && text[end - 1] == u' ')
        --end;
    return text.sliced(begin, end - begin);
}

[[nodiscard]] inline QString TrimBlanks(const QString& text) {
    return TrimBlanks(QStringView(text)).toString();
}

[[nodiscard]] inline QByteArrayView TrimBlanks(QByteArrayView bytes) {
    qsizetype begin = 0;
    qsizetype end = bytes.size();
    while (begin < end && bytes[begin] == ' ')
        ++begin;
    while (end > begin && bytes[end - 1] == ' ')
        --end;
    return bytes.sliced(begin, end - begin);
}

[[nodiscard]] inline QByteArray TrimBlanks(const QByteArray& bytes) {
    return TrimBlanks(QByteArrayView(bytes)).toByteArray();
}

} // namespace kestrova
