#pragma once

#include <QString>

namespace kestrova {

// What replaced, deleted or rewrote a program, as its history shows the kept version.
[[nodiscard]] QString ReceivedOn(int port);                       // "received on COM2"
[[nodiscard]] QString ImportedFrom(const QString& sourceDir);     // "imported from E:"
[[nodiscard]] QString ExportedFrom(const QString& sourceDir);     // "exported from C:\Jobs\PUNCH1\Parts"
[[nodiscard]] QString CopiedOverFrom(const QString& sourceDir);   // "copied over from Beta"
[[nodiscard]] QString MovedOverFrom(const QString& sourceDir);    // "moved over from Beta"
[[nodiscard]] QString RenamedOverFrom(const QString& sourceName); // "renamed over from Bracket"
[[nodiscard]] QString RestoredVersionOf(const QString& when); // "restored the version of 2026-11-23 14:05:12"

inline const QString Deleted = QStringLiteral("deleted");
inline const QString Renumbered = QStringLiteral("renumbered");
inline const QString NumbersStripped = QStringLiteral("numbers stripped");
inline const QString SpacesRemoved = QStringLiteral("spaces removed");
inline const QString SavedInEditor = QStringLiteral("saved in the editor");
inline const QString RestoredFromUndo = QStringLiteral("restored from the undo area");

} // namespace kestrova
