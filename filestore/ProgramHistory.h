#pragma once

#include "Frontend/Session.h"
#include "filestore/HistoryLimits.h"

#include <QList>
#include <QString>
#include <vector>

namespace kestrova {

// One kept version of a program: its bytes as they were before an operation replaced, deleted
// or rewrote the program.
struct HistoryVersion {
    int serial = 0;    // the order of keeping across the store, from 1
    QString program;   // the full system path of the program it was
    QString file;      // the full system path of the kept bytes
    QString when;      // local time of keeping, "2026-11-23 14:05:12"
    qint64 size = 0;   // bytes
    QString operation; // what replaced it: "received on COM2", "renumbered", "deleted", ...
};

// The catalog as read (ProgramHistory.cpp).
struct HistoryCatalog;

// The program history of an installation: the directory "History\" of the system directory,
// outside every data directory, so that no listing, search, export or floppy sees it. It holds
// each kept version as a file of its own named by its serial ("00000017.prg") and the catalog
// "History.lst", one line per version:
//   17,"2026-11-23 14:05:12",1234,"C:\Jobs\PUNCH1\Parts\Louvre.prg","received on COM2"
// A version's bytes are whole on the disk before its line is; a version is listed only when its
// line and its file are both there, so a keeping that fails part-way lists nothing.
//
// Programs (".prg") and drawings (".drw") are kept; any other file is not.
class ProgramHistory {
public:
    // The store of the installation whose system directory is systemPath ("C:\Kestrova\").
    ProgramHistory(FileSystem& files, const QString& systemPath);

    [[nodiscard]] static bool Keeps(const QString& path);

    // The versions kept of a program (any spelling of its path), newest first.
    [[nodiscard]] QList<HistoryVersion> Versions(const QString& program) const;
    // The whole bytes of a version.
    [[nodiscard]] QByteArray Bytes(const HistoryVersion& version) const;

    // Keeps the text program holds now as its newest version, at the cost of a second name for
    // its file where the host allows (the operations rename a new text over a program or remove
    // its name, never write into it), else a copy; then drops the oldest versions beyond the
    // limits of "History.cfg", never the one just kept. Nothing for a missing file, one the
    // history does not keep, or with the history switched off. A failure to keep raises the error
    // of the host file layer, with nothing of this version listed; a failure to drop raises
    // HistoryNotTrimmedError, with this version kept.
    void Keep(const QString& program, const QString& operation);

    [[nodiscard]] const QString& Directory() const { return m_root; }
    [[nodiscard]] QString CatalogPath() const { return m_root + QStringLiteral("History.lst"); }
    [[nodiscard]] QString LimitsPath() const { return m_systemPath + HistoryLimitsName; }

private:
    // The catalog as this process knows it: read again only when the file is no longer the one
    // it last read or wrote here (another program, the DNC service say, kept a version since).
    [[nodiscard]] HistoryCatalog& Catalog() const;
    [[nodiscard]] HistoryLimits Limits() const;
    void Append(HistoryCatalog& catalog, const QByteArray& line);
    // Drops the oldest versions beyond the limits; the last entry is the one just kept.
    void ApplyLimits(HistoryCatalog& catalog, const HistoryLimits& limits);

    FileSystem& m_files;
    QString m_systemPath;
    QString m_root; // "C:\Kestrova\History\"
};

// A version kept whole whose oldest versions beyond the limits could not be dropped: the error
// that stopped the drop. The versions stay listed as they were, the new one with them.
class HistoryNotTrimmedError : public SystemError {
public:
    explicit HistoryNotTrimmedError(const SystemError& error) : SystemError(error) {}
};

// The one call of every operation just before it replaces, deletes or rewrites a program: keeps
// its text in the history. A history that cannot be written never stops the operation: it is
// told in one message, why included, and the operation goes on. While the history keeps failing
// for the same reason, the operations that follow are not told again.
void KeepPreviousVersion(Session& session, const QString& program, const QString& operation);
void KeepPreviousVersion(FileSystem& files, MessageService& messages, const QString& systemPath,
                         const QString& program, const QString& operation);

// Puts a version back as the program's text; the text it replaces is kept first, as every
// replacement keeps it. Raises the error of the host file layer when the version cannot be
// copied back (the program is then as it was).
void RestoreVersion(Session& session, const HistoryVersion& version);

} // namespace kestrova
