#include "exchange/FolderTree.h"

#include "platform/Blanks.h"

namespace kestrova {

FolderTree FolderTreeOf(const FileSystem& files, const QString& folder) {
    QString full = files.FullPath(TrimBlanks(folder));
    if (!full.endsWith(u'\\'))
        full += u'\\';
    if (!files.IsDirectory(full))
        full = full.left(3);
    FolderTree tree;
    const QStringList names = full.mid(3).split(u'\\', Qt::SkipEmptyParts);
    QString path = full.left(3);
    tree.captions << path;
    tree.paths << path;
    for (const QString& name : names) {
        path += name + u'\\';
        tree.captions << QString(2 * int(tree.paths.size()), u' ') + name;
        tree.paths << path;
    }
    tree.open = int(tree.paths.size()) - 1;
    const QString indent(2 * int(tree.paths.size()), u' ');
    for (const QString& name : files.List(full, QStringLiteral("*"), EntryKinds::Directories)) {
        if (name == u"." || name == u"..")
            continue;
        tree.captions << indent + name;
        tree.paths << full + name + u'\\';
    }
    return tree;
}

QStringList DriveChoices(const FileSystem& files) {
    QStringList drives;
    for (const DriveMapping& drive : files.Drives()) {
        QString entry = QString(drive.letter) + u':';
        if (drive.kind == DriveKind::Removable)
            entry += QStringLiteral(" [Removable Drive]");
        drives << entry;
    }
    return drives;
}

} // namespace kestrova
