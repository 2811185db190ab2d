#include "filestore/HistoryOperations.h"

namespace kestrova {

namespace {

// A directory as the operator reads it: without its closing "\" ("E:" for a drive's root).
QString Place(const QString& directory) {
    return directory.endsWith(u'\\') ? directory.chopped(1) : directory;
}

// The last name of a directory ("Beta" of "C:\Jobs\PUNCH1\Beta\").
QString LastName(const QString& directory) {
    const QString place = Place(directory);
    return place.mid(place.lastIndexOf(u'\\') + 1);
}

} // namespace

QString ReceivedOn(int port) {
    return QStringLiteral("received on COM%1").arg(port);
}

QString ImportedFrom(const QString& sourceDir) {
    return QStringLiteral("imported from ") + Place(sourceDir);
}

QString ExportedFrom(const QString& sourceDir) {
    return QStringLiteral("exported from ") + Place(sourceDir);
}

QString CopiedOverFrom(const QString& sourceDir) {
    return QStringLiteral("copied over from ") + LastName(sourceDir);
}

QString MovedOverFrom(const QString& sourceDir) {
    return QStringLiteral("moved over from ") + LastName(sourceDir);
}

QString RenamedOverFrom(const QString& sourceName) {
    return QStringLiteral("renamed over from ") + sourceName;
}

QString RestoredVersionOf(const QString& when) {
    return QStringLiteral("restored the version of ") + when;
}

} // namespace kestrova
