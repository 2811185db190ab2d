#pragma once

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QMap>
#include <QStringList>
#include <algorithm>

namespace kestrova::testing {

// What a host directory holds, file by file: "name=content", the line ends shown as "|". Whole
// trees are kept by their path below the root.
inline QMap<QString, QByteArray> TreeContents(const QString& hostRoot) {
    QMap<QString, QByteArray> contents;
    QDirIterator it(hostRoot, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        QFile f(path);
        if (f.open(QIODevice::ReadOnly))
            contents.insert(QDir(hostRoot).relativeFilePath(path), f.readAll());
    }
    return contents;
}

inline QString Shown(const QByteArray& bytes) {
    return QString::fromLatin1(bytes).replace(QStringLiteral("\r\n"), QStringLiteral("|"));
}

// The changes from one snapshot to another: "+name=content" added, "~name=content" changed,
// "-name" removed, in name order.
inline QStringList Changes(const QMap<QString, QByteArray>& before, const QMap<QString, QByteArray>& after) {
    QStringList changes;
    for (auto it = after.cbegin(); it != after.cend(); ++it) {
        if (!before.contains(it.key()))
            changes << u'+' + it.key() + u'=' + Shown(it.value());
        else if (before.value(it.key()) != it.value())
            changes << u'~' + it.key() + u'=' + Shown(it.value());
    }
    for (auto it = before.cbegin(); it != before.cend(); ++it) {
        if (!after.contains(it.key()))
            changes << u'-' + it.key();
    }
    std::sort(changes.begin(), changes.end(), [](const QString& a, const QString& b) {
        return a.mid(1).section(u'=', 0, 0).compare(b.mid(1).section(u'=', 0, 0), Qt::CaseInsensitive) < 0;
    });
    return changes;
}

} // namespace kestrova::testing
