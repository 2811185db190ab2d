#include "platform/SystemPath.h"

namespace kestrova {

SystemPath SystemPath::Parse(const QString& text) {
    SystemPath path;
    QString rest = text;
    if (rest.size() >= 2 && rest.at(1) == u':' && rest.at(0).isLetter() && rest.at(0).unicode() < 128) {
        path.drive = rest.at(0).toUpper();
        rest = rest.mid(2);
    }
    if (!rest.isEmpty() && (rest.at(0) == u'\\' || rest.at(0) == u'/'))
        path.rooted = true;
    QStringList names;
    qsizetype start = 0;
    for (qsizetype i = 0; i <= rest.size(); ++i) {
        if (i == rest.size() || rest.at(i) == u'\\' || rest.at(i) == u'/') {
            if (i > start)
                names << rest.mid(start, i - start);
            start = i + 1;
        }
    }
    for (const QString& name : names) {
        if (name == QLatin1String("."))
            continue;
        if (name == QLatin1String("..") && !path.components.isEmpty() &&
            path.components.last() != QLatin1String("..")) {
            path.components.removeLast();
            continue;
        }
        if (name == QLatin1String("..") && path.rooted)
            continue; // the root's parent is the root
        path.components << name;
    }
    return path;
}

QString SystemPath::Text() const {
    QString text;
    if (!drive.isNull())
        text = QString(drive) + u':';
    if (rooted)
        text += u'\\';
    text += components.join(u'\\');
    return text;
}

QString FromHostNotation(const QString& value) {
    if (value.startsWith(u'/')) {
        QString rest = value.mid(1);
        rest.replace(u'/', u'\\');
        return QStringLiteral("Z:\\") + rest;
    }
    return value;
}

} // namespace kestrova
