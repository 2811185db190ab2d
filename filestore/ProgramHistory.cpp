#include "filestore/ProgramHistory.h"

#include "filestore/HistoryOperations.h"
#include "filestore/Names.h"
#include "platform/TextFile.h"
#include "settings/SettingsFile.h"

#include <QDateTime>
#include <QSet>
#include <algorithm>
#include <optional>

namespace kestrova {

namespace {

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

// A catalog line read back; a line cut short by a failed write (or changed by hand beyond
// reading) is no version.
std::optional<HistoryVersion> ParseLine(QByteArrayView line, const QString& root) {
    HistoryVersion v;
    qsizetype at = 0;
    const auto serial = Number(line, at);
    const auto when = QuotedField(line, at);
    if (!serial || *serial <= 0 || !when || !Comma(line, at))
        return std::nullopt;
    const auto size = Number(line, at);
    const auto program = QuotedField(line, at);
    if (!size || !program || !Comma(line, at))
        return std::nullopt;
    const auto operation = QuotedField(line, at);
    if (!operation || at != line.size())
        return std::nullopt;
    v.serial = int(*serial);
    v.when = FromBytes(when->toByteArray());
    v.size = *size;
    v.program = FromBytes(program->toByteArray());
    v.operation = FromBytes(operation->toByteArray());
    v.file = VersionFile(root, v.serial, v.program);
    return v;
}

bool SameProgram(const QString& a, const QString& b) {
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

} // namespace

ProgramHistory::ProgramHistory(FileSystem& files, const QString& systemPath)
    : m_files(files), m_systemPath(systemPath.endsWith(u'\\') ? systemPath : systemPath + u'\\'),
      m_root(m_systemPath + QStringLiteral("History\\")) {}

bool ProgramHistory::Keeps(const QString& path) {
    const QString extension = GetExtension(path).toLower();
    return extension == u"prg" || extension == u"drw";
}

ProgramHistory::Catalog ProgramHistory::ReadCatalog() const {
    Catalog catalog;
    const QString path = CatalogPath();
    if (!m_files.IsFile(path))
        return catalog;
    const QByteArray bytes = ReadAllBytes(m_files, path);
    catalog.endsWithLineEnd = bytes.isEmpty() || bytes.endsWith('\n');
    for (qsizetype from = 0; from < bytes.size();) {
        qsizetype end = bytes.indexOf('\n', from);
        if (end < 0)
            end = bytes.size();
        QByteArrayView line(bytes.constData() + from, end - from);
        if (line.endsWith('\r'))
            line.chop(1);
        if (auto version = ParseLine(line, m_root))
            catalog.versions.append(std::move(*version));
        from = end + 1;
    }
    std::sort(catalog.versions.begin(), catalog.versions.end(),
              [](const HistoryVersion& a, const HistoryVersion& b) { return a.serial < b.serial; });
    return catalog;
}

QList<HistoryVersion> ProgramHistory::Versions(const QString& program) const {
    const QString full = m_files.FullPath(program);
    QList<HistoryVersion> found;
    for (const HistoryVersion& v : ReadCatalog().versions)
        if (SameProgram(v.program, full) && m_files.IsFile(v.file))
            found.prepend(v);
    return found;
}

QByteArray ProgramHistory::Bytes(const HistoryVersion& version) const {
    return ReadAllBytes(m_files, version.file);
}

void ProgramHistory::Keep(const QString& program, const QString& operation) {
    if (!Keeps(program) || !m_files.IsFile(program))
        return;
    m_files.MakeDirectoryIfMissing(m_root.chopped(1));
    Catalog catalog = ReadCatalog();
    const QString full = m_files.FullPath(program);
    // The text kept last is not kept twice: the same program received again, say.
    for (auto v = catalog.versions.crbegin(); v != catalog.versions.crend(); ++v) {
        if (!SameProgram(v->program, full))
            continue;
        if (m_files.IsFile(v->file) && v->size == m_files.Length(program) &&
            Bytes(*v) == ReadAllBytes(m_files, program))
            return;
        break;
    }

    HistoryVersion version;
    version.program = full;
    version.operation = operation;
    version.when = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
    version.serial = catalog.versions.isEmpty() ? 1 : catalog.versions.last().serial + 1;
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
        Append(catalog, version);
        // The line first: its force takes the new name of the version along on most hosts.
        m_files.ForceToDisk(CatalogPath());
        m_files.ForceToDisk(version.file);
    } catch (const SystemError&) {
        try {
            m_files.Delete(version.file);
        } catch (const SystemError&) {
            // Without its file, a line of the catalog lists nothing.
        }
        throw;
    }
    catalog.versions.append(version);
    ApplyLimits(catalog, version);
}

void ProgramHistory::Append(const Catalog& catalog, const HistoryVersion& version) {
    TextWriter writer(m_files, CatalogPath(), TextWriter::Mode::Append);
    // A line cut short by an earlier failure is ended, so that it spoils no other.
    writer.WriteBytes(QByteArray(catalog.endsWithLineEnd ? "" : "\r\n") + ToBytes(CatalogLine(version)) +
                      "\r\n");
    writer.Close();
}

void ProgramHistory::ApplyLimits(Catalog& catalog, const HistoryVersion& kept) {
    const HistoryLimits limits = ReadHistoryLimits(m_files, LimitsPath());
    QSet<int> dropped;
    int ofProgram = 0;
    for (const HistoryVersion& v : catalog.versions)
        ofProgram += SameProgram(v.program, kept.program) ? 1 : 0;
    qint64 total = 0;
    for (const HistoryVersion& v : catalog.versions)
        total += v.size;
    // Oldest first: the program's own versions beyond their number, then any beyond the size.
    for (const HistoryVersion& v : catalog.versions) {
        if (ofProgram <= limits.versions)
            break;
        if (SameProgram(v.program, kept.program)) {
            dropped.insert(v.serial);
            total -= v.size;
            --ofProgram;
        }
    }
    for (const HistoryVersion& v : catalog.versions) {
        if (total <= limits.bytes)
            break;
        if (v.serial != kept.serial && !dropped.contains(v.serial)) {
            dropped.insert(v.serial);
            total -= v.size;
        }
    }
    if (dropped.isEmpty())
        return;
    QStringList lines;
    QStringList files;
    for (const HistoryVersion& v : std::as_const(catalog.versions)) {
        if (dropped.contains(v.serial))
            files << v.file;
        else
            lines << CatalogLine(v);
    }
    // The lines go first: a file that cannot be deleted is no longer listed.
    WriteAllLines(m_files, CatalogPath(), lines);
    for (const QString& file : files)
        if (m_files.Exists(file))
            m_files.Delete(file);
    catalog.versions.removeIf([&](const HistoryVersion& v) { return dropped.contains(v.serial); });
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
        messages.ShowError(NotKept(files.FullPath(program), error));
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
