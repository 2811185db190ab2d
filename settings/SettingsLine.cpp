#include "settings/SettingsLine.h"

#include "platform/Blanks.h"

#include <cmath>

namespace kestrova {

QString ValueOfLine(QString line) {
    const qsizetype colon = line.indexOf(u':');
    if (colon >= 0)
        return TrimBlanks(line.mid(colon + 1));
    return TrimBlanks(line);
}

bool HasColon(const QString& text) {
    return text.contains(u':');
}

double LeadingNumber(const QString& text) {
    qsizetype i = 0;
    const qsizetype n = text.size();
    while (i < n && (text.at(i) == u' ' || text.at(i) == u'\t'))
        ++i;
    const qsizetype start = i;
    if (i < n && (text.at(i) == u'+' || text.at(i) == u'-'))
        ++i;
    qsizetype digits = 0;
    while (i < n && text.at(i).isDigit() && text.at(i).unicode() < 128) {
        ++i;
        ++digits;
    }
    if (i < n && text.at(i) == u'.') {
        ++i;
        while (i < n && text.at(i).unicode() >= '0' && text.at(i).unicode() <= '9') {
            ++i;
            ++digits;
        }
    }
    if (digits == 0)
        return 0.0;
    qsizetype end = i;
    if (i < n && (text.at(i) == u'E' || text.at(i) == u'e' || text.at(i) == u'D' || text.at(i) == u'd')) {
        qsizetype j = i + 1;
        if (j < n && (text.at(j) == u'+' || text.at(j) == u'-'))
            ++j;
        const qsizetype expStart = j;
        while (j < n && text.at(j).unicode() >= '0' && text.at(j).unicode() <= '9')
            ++j;
        if (j > expStart)
            end = j;
    }
    QString number = text.mid(start, end - start);
    number.replace(u'D', u'E').replace(u'd', u'e');
    bool ok = false;
    const double value = number.toDouble(&ok);
    return ok && std::isfinite(value) ? value : 0.0;
}

Int16 LeadingInt16(const QString& text) {
    try {
        return Int16::Truncate(LeadingNumber(text));
    } catch (const OverflowError&) {
        throw OverflowError(QString(), QStringLiteral("the number \"%1\"").arg(TrimBlanks(text)));
    }
}

} // namespace kestrova
