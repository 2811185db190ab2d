#include "filestore/HistoryLimits.h"

#include "platform/TextFile.h"
#include "settings/SettingsFile.h"
#include "settings/SettingsLine.h"

namespace kestrova {

namespace {

const QString VersionsLabel = QStringLiteral("Versions Kept Per Program");
const QString SizeLabel = QStringLiteral("History Size Limit (MB)");

constexpr double Megabyte = 1 << 20;

// The positive number a line holds, or fallback.
double PositiveValue(const QStringList& lines, int index, double fallback) {
    if (index >= lines.size())
        return fallback;
    const double value = LeadingNumber(ValueOfLine(lines.at(index)));
    return value > 0 && value < 1e9 ? value : fallback;
}

} // namespace

HistoryLimits ReadHistoryLimits(const FileSystem& files, const QString& path) {
    HistoryLimits limits;
    if (!files.IsFile(path))
        return limits;
    const QStringList lines = ReadAllLines(files, path);
    // No versions at all switches the history off.
    const bool off = lines.size() > 0 && LeadingNumber(ValueOfLine(lines.at(0))) == 0 &&
                     ValueOfLine(lines.at(0)).startsWith(u'0');
    limits.versions = off ? 0 : qMax(1, int(PositiveValue(lines, 0, limits.versions)));
    // A fraction of a megabyte is taken as written: a small history for a small disk.
    limits.bytes = qint64(PositiveValue(lines, 1, double(limits.bytes) / Megabyte) * Megabyte);
    return limits;
}

QStringList HistoryLimitsLines(const HistoryLimits& limits) {
    return {LabelledLine(VersionsLabel, QString::number(limits.versions)),
            LabelledLine(SizeLabel, QString::number(double(limits.bytes) / Megabyte, 'g', 12)), EndMarker};
}

} // namespace kestrova
