#pragma once

#include <QChar>
#include <QString>

namespace kestrova {

// The marker characters of a received program's header lines.
inline constexpr QChar MachineMarker = QChar(23);   // ETB: the machine's name
inline constexpr QChar DirectoryMarker = QChar(24); // CAN: the program directory's name
inline constexpr QChar ProgramMarker = QChar(25);   // EM: the program's name without extension

// The header values of a received program, from its first three lines. A value that is not an
// acceptable name counts as absent (empty), so that its default applies; Found still tells
// that a marker was there, so the header lines are still left out of the filed program.
struct ReceivedHeader {
    QString Machine;
    QString Directory;
    QString Program;
    bool Found = false;

    // Examines line number index (0, 1 or 2) for its own marker only.
    void TakeLine(int index, const QString& line);
};

// The header values of a program's first characters, as far as they came: only lines already
// ended count, so a name still arriving is not shown cut short.
[[nodiscard]] ReceivedHeader HeaderOfStart(const QByteArray& start);

// Whether a line is one of the header lines that the filed program leaves out.
[[nodiscard]] bool HoldsHeaderMarker(const QString& line);

} // namespace kestrova
