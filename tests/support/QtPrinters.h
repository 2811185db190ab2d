#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <ostream>

// Readable failure output for Qt texts in the tests.
inline void PrintTo(const QString& text, std::ostream* os) {
    *os << '"' << text.toStdString() << '"';
}
inline void PrintTo(const QByteArray& bytes, std::ostream* os) {
    *os << '"' << bytes.toStdString() << '"';
}
inline void PrintTo(const QStringList& list, std::ostream* os) {
    *os << '{';
    for (qsizetype i = 0; i < list.size(); ++i)
        *os << (i ? ", " : "") << '"' << list.at(i).toStdString() << '"';
    *os << '}';
}
