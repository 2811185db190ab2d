#include "filestore/ProgramHistory.h"

#include "filestore/HistoryOperations.h"
#include "filestore/Names.h"
#include "platform/TextFile.h"
#include "settings/SettingsFile.h"

#include <QDateTime>
#include <algorithm>
#include <climits>
#include <optional>

namespace kestrova {

// A catalog line read back: what the limits need of it. A line cut short by a failed write (or
// changed by hand beyond reading) is no version.
struct HistoryCatalogEntry {
    int serial = 0;
    qint64 size = 0;
    QByteArray program;
    QByteArray when;
    QByteArray operation;
    QByteArray line;
};

struct HistoryCatalog {
    std::vector<HistoryCatalogEntry> entries; // oldest first
    bool endsWithLineEnd = true;
    bool known = false;             // read, or written whole, by this process
    std::optional<FileStamp> stamp; // the file as it was then; nothing while there is none
};

namespace {

using Entry = HistoryCatalogEntry;

// The catalog line of a version.
QString CatalogLine(const HistoryVersion& v) {
    return QStringLiteral("%1,\"%2\",%3,\"%4\",\"%5\"")
        .arg(v.serial)
        .arg(v.when)
        .arg(v.size)
        .arg(v.program, v.operation);
}

// The text between the quotes that open at from; from is left after the closing quote.
std::optional<QByteArrayView> QuotedField(QByteArrayView line, qsizetype& from) {
    if (from >= line.size() || line.at(from) != '"')
        return std::nullopt;
    const qsizetype close = line.indexOf('"', from + 1);
    if (close < 0)
        return std::nullopt;
    const QByteArrayView text = line.sliced(from + 1, close - from - 1);
    from = close + 1;
    return text;
}

// The number up to the next comma; from is left after the comma.
std::optional<qint64> Number(QByteArrayView line, qsizetype& from) {
    const qsizetype comma = line.indexOf(',', from);
    if (comma < 0)
        return std::nullopt;
    bool ok = false;
    const qint64 value = line.sliced(from, comma - from).toLongLong(&ok);
    from = comma + 1;
    return ok ? std::optional<qint64>(value) : std::nullopt;
}

bool Comma(QByteArrayView line, qsizetype& from) {
    if (from >= line.size() || line.at(from) != ',')
        return false;
    ++from;
    return true;
}

// Where a version's bytes lie: its serial and the program's extension.
QString VersionFile(const QString& root, int serial, const QString& program) {
    return root +
           QStringLiteral("%1.%2").arg(serial, 8, 10, QLatin1Char('0')).arg(GetExtension(program).toLower());
}

std::optional<Entry> ParseEntry(QByteArrayView line) {
    Entry e;
    qsizetype at = 0;
    const auto serial = Number(line, at);
    const auto when = QuotedField(line, at);
    if (!serial || *serial <= 0 || *serial > INT_MAX || !when || !Comma(line, at))
        return std::nullopt;
    const auto size = Number(line, at);
    const auto program = QuotedField(line, at);
    if (!size || !program || !Comma(line, at))
        return std::nullopt;
    const auto operation = QuotedField(line, at);
    if (!operation || at != line.size())
        return std::nullopt;
    e.serial = int(*serial);
    e.size = *size;
    e.program = program->toByteArray();
    e.when = when->toByteArray();
    e.operation = operation->toByteArray();
    e.line = line.toByteArray();
    return e;
}

HistoryVersion VersionOf(const Entry& e, const QString& root) {
    HistoryVersion v;
    v.serial = e.serial;
    v.size = e.size;
    v.when = FromBytes(e.when);
    v.program = FromBytes(e.program);
    v.operation = FromBytes(e.operation);
    v.file = VersionFile(root, v.serial, v.program);
    return v;
}

// Program paths are compared as the host file layer finds names: ignoring letter case.
bool SameProgram(QByteArrayView a, QByteArrayView b) {
    return qstrnicmp(a.data(), a.size(), b.data(), b.size()) == 0;
}

} // namespace

ProgramHistory::ProgramHistory(FileSystem& files, const QString& systemPath)
    : m_files(files), m_systemPath(systemPath.endsWith(u'\\') ? systemPath : systemPath + u'\\'),
      m_root(m_systemPath + QStringLiteral("History\\")) {}

bool ProgramHistory::Keeps(const QString& path) {
    const QString extension = GetExtension(path).toLower();
    return extension == u"prg" || extension == u"drw";
}

namespace {

// The catalog's lines, oldest first.
void ParseCatalog(const QByteArray& bytes, HistoryCatalog& catalog) {
    catalog.entries.clear();
    catalog.endsWithLineEnd = bytes.isEmpty() || bytes.endsWith('\n');
    for (qsizetype from = 0; from < bytes.size();) {
        qsizetype end = bytes.indexOf('\n', from);
        if (end < 0)
            end = bytes.size();
        QByteArrayView line(bytes.constData() + from, end - from);
        if (line.endsWith('\r'))
            line.chop(1);
        if (auto entry = ParseEntry(line))
            catalog.entries.push_back(std::move(*entry));
        from = end + 1;
    }
    std::stable_sort(catalog.entries.begin(), catalog.entries.end(),
                     [](const Entry& a, const Entry& b) { return a.serial < b.serial; });
}

// What this process knows of each store's catalog and limits, by the host path of the file. A
// keeping that read the whole catalog again each time would cost as much as the catalog is long.
QHash<QString, HistoryCatalog>& KnownCatalogs() {
    static QHash<QString, HistoryCatalog> catalogs;
    return catalogs;
}

QHash<QString, std::pair<FileStamp, HistoryLimits>>& KnownLimits() {
    static QHash<QString, std::pair<FileStamp, HistoryLimits>> limits;
    return limits;
}

// A process that works with many installations (the tests) keeps a few of them only.
template <typename T>
T& Known(QHash<QString, T>& known, const QString& host) {
    constexpr qsizetype Most = 8;
    if (known.size() >= Most && !known.contains(host))
        known.clear();
    return known[host];
}

} // namespace

HistoryCatalog& ProgramHistory::Catalog() const {
    const QString path = CatalogPath();
    const auto stamp = m_files.Stamp(path);
    HistoryCatalog& catalog = Known(KnownCatalogs(), stamp ? stamp->second : m_files.HostPath(path));
    const std::optional<FileStamp> now = stamp ? std::optional(stamp->first) : std::nullopt;
    if (catalog.known && catalog.stamp == now)
        return catalog;
    // Stamped before it is read: a change while it is read shows at the next look.
    catalog.known = false;
    catalog.stamp = now;
    ParseCatalog(now ? ReadAllBytes(m_files, path) : QByteArray(), catalog);
    catalog.known = true;
    return catalog;
}

HistoryLimits ProgramHistory::Limits() const {
    const QString path = LimitsPath();
    const auto stamp = m_files.Stamp(path);
    if (!stamp)
        return ReadHistoryLimits(m_files, path);
    auto& [known, limits] = Known(KnownLimits(), stamp->second);
    if (!(known == stamp->first)) {
        limits = ReadHistoryLimits(m_files, path);
        known = stamp->first;
    }
    return limits;
}

QList<HistoryVersion> ProgramHistory::Versions(const QString& program) const {
    const QByteArray full = ToBytes(m_files.FullPath(program));
    QList<HistoryVersion> found;
    for (const Entry& e : Catalog().entries) {
        if (!SameProgram(e.program, full))
            continue;
        HistoryVersion v = VersionOf(e, m_root);
        if (m_files.IsFile(v.file))
            found.prepend(std::move(v));
    }
    return found;
}

QByteArray ProgramHistory::Bytes(const HistoryVersion& version) const {
    return ReadAllBytes(m_files, version.file);
}

void ProgramHistory::Keep(const QString& program, const QString& operation) {
    if (!Keeps(program) || !m_files.IsFile(program))
        return;
    const HistoryLimits limits = Limits();
    if (limits.versions == 0)
        return;
    m_files.MakeDirectoryIfMissing(m_root.chopped(1));
    HistoryCatalog& catalog = Catalog();
    const QString full = m_files.FullPath(program);
    const QByteArray fullBytes = ToBytes(full);
    // The text kept last is not kept twice: the same program received again, say.
    for (auto e = catalog.entries.crbegin(); e != catalog.entries.crend(); ++e) {
        if (!SameProgram(e->program, fullBytes))
            continue;
        const HistoryVersion last = VersionOf(*e, m_root);
        if (m_files.IsFile(last.file) && last.size == m_files.Length(program) &&
            Bytes(last) == ReadAllBytes(m_files, program))
            return;
        break;
    }

    HistoryVersion version;
    version.program = full;
    version.operation = operation;
    version.when = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
    version.serial = catalog.entries.empty() ? 1 : catalog.entries.back().serial + 1;
    // A file without its line (a keeping cut short) keeps its name: the next serial is taken.
    for (;; ++version.serial) {
        version.file = VersionFile(m_root, version.serial, version.program);
        if (!m_files.Exists(version.file))
            break;
    }

    if (!m_files.Link(version.program, version.file))
        m_files.Copy(version.program, version.file);
    try {
        version.size = m_files.Length(version.file);
        Append(catalog, ToBytes(CatalogLine(version)));
        // The line first: its force takes the new name of the version along on most hosts.
        m_files.ForceToDisk(QStringList{CatalogPath(), version.file});
    } catch (const SystemError&) {
        try {
            m_files.Delete(version.file);
        } catch (const SystemError&) {
            // Without its file, a line of the catalog lists nothing.
        }
        throw;
    }
    try {
        ApplyLimits(catalog, limits);
    } catch (const SystemError& error) {
        throw HistoryNotTrimmedError(error);
    }
}

void ProgramHistory::Append(HistoryCatalog& catalog, const QByteArray& line) {
    // A line cut short by an earlier failure is ended, so that it spoils no other.
    const QByteArray bytes = QByteArray(catalog.endsWithLineEnd ? "" : "\r\n") + line + "\r\n";
    const qint64 before = catalog.stamp ? catalog.stamp->size : 0;
    catalog.known = false; // until the line is known to be whole on the disk
    TextWriter writer(m_files, CatalogPath(), TextWriter::Mode::Append);
    writer.WriteBytes(bytes);
    writer.Close();
    catalog.entries.push_back(*ParseEntry(line));
    catalog.endsWithLineEnd = true;
    // Only this line came since the catalog was read: what is known of it stays true.
    const auto after = m_files.Stamp(CatalogPath());
    catalog.stamp = after ? std::optional(after->first) : std::nullopt;
    catalog.known = after && after->first.size == before + bytes.size();
}

void ProgramHistory::ApplyLimits(HistoryCatalog& catalog, const HistoryLimits& limits) {
    const Entry& kept = catalog.entries.back();
    std::vector<bool> dropped(catalog.entries.size(), false);
    int ofProgram = 0;
    qint64 total = 0;
    for (const Entry& e : catalog.entries) {
        ofProgram += SameProgram(e.program, kept.program) ? 1 : 0;
        total += e.size;
    }
    // Oldest first: the program's own versions beyond their number, then any beyond the size;
    // never the one just kept.
    const std::size_t last = catalog.entries.size() - 1;
    for (std::size_t i = 0; i < last && ofProgram > limits.versions; ++i) {
        if (SameProgram(catalog.entries[i].program, kept.program)) {
            dropped[i] = true;
            total -= catalog.entries[i].size;
            --ofProgram;
        }
    }
    for (std::size_t i = 0; i < last && total > limits.bytes; ++i) {
        if (!dropped[i]) {
            dropped[i] = true;
            total -= catalog.entries[i].size;
        }
    }
    if (std::find(dropped.begin(), dropped.end(), true) == dropped.end())
        return;
    QByteArray lines;
    QStringList files;
    std::vector<Entry> staying;
    for (std::size_t i = 0; i <= last; ++i) {
        if (dropped[i]) {
            files << VersionOf(catalog.entries[i], m_root).file;
        } else {
            lines += catalog.entries[i].line + "\r\n";
            staying.push_back(catalog.entries[i]);
        }
    }
    // The lines go first: a file that cannot be deleted is no longer listed.
    catalog.known = false; // until the catalog is known to be whole on the disk
    TextWriter writer(m_files, CatalogPath(), TextWriter::Mode::Replace);
    writer.WriteBytes(lines);
    writer.Close();
    const auto written = m_files.Stamp(CatalogPath());
    catalog.entries = std::move(staying);
    catalog.endsWithLineEnd = true;
    catalog.stamp = written ? std::optional(written->first) : std::nullopt;
    catalog.known = written && written->first.size == lines.size();
    for (const QString& file : files)
        if (m_files.Exists(file))
            m_files.Delete(file);
}

namespace {

// The reason the history last failed for, per store: told once until it works again.
QHash<QString, SystemError::Kind>& FailingStores() {
    static QHash<QString, SystemError::Kind> stores;
    return stores;
}

QString NotKept(const QString& program, const SystemError& error) {
    return error.text() + QStringLiteral("\nThe History Of %1 Could Not Be Kept !").arg(Quoted(program));
}

QString NotTrimmed(const SystemError& error) {
    return error.text() + QStringLiteral("\nThe Oldest Versions Of The History Could Not Be Dropped !");
}

} // namespace

void KeepPreviousVersion(FileSystem& files, MessageService& messages, const QString& systemPath,
                         const QString& program, const QString& operation) {
    ProgramHistory history(files, systemPath);
    try {
        history.Keep(program, operation);
        if (!FailingStores().isEmpty())
            FailingStores().remove(files.HostPath(history.Directory()));
    } catch (const SystemError& error) {
        const QString store = files.HostPath(history.Directory());
        const auto failing = FailingStores().constFind(store);
        if (failing != FailingStores().constEnd() && *failing == error.kind())
            return;
        FailingStores().insert(store, error.kind());
        const bool kept = dynamic_cast<const HistoryNotTrimmedError*>(&error) != nullptr;
        messages.ShowError(kept ? NotTrimmed(error) : NotKept(files.FullPath(program), error));
    }
}

void KeepPreviousVersion(Session& session, const QString& program, const QString& operation) {
    KeepPreviousVersion(session.files, session.messages, session.settings.SystemPath, program, operation);
}

void RestoreVersion(Session& session, const HistoryVersion& version) {
    KeepPreviousVersion(session, version.program, RestoredVersionOf(version.when));
    session.files.Copy(version.file, version.program);
}

} // namespace kestrova
