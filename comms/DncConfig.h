#pragma once

#include "comms/DncRequest.h"
#include "platform/FileSystem.h"

#include <QList>
#include <QString>
#include <stdexcept>

namespace kestrova {

// One machine the DNC service serves, as "Dnc.cfg" names it.
struct DncMachine {
    int Number = 0;    // its number in "Machine.lst"
    QString Directory; // where programs whose header names no directory are filed; "" for the first
    int Line = 0;      // the line of "Dnc.cfg" that names it, for messages
    DncRequestForm Request;
};

// The DNC service's settings: the served machines, in file order.
struct DncConfig {
    QList<DncMachine> Machines;
};

// "Dnc.cfg" cannot be used; what() names the file, the line and the reason.
class DncConfigError : public std::runtime_error {
public:
    explicit DncConfigError(const QString& text) : std::runtime_error(text.toStdString()), m_text(text) {}
    [[nodiscard]] const QString& Text() const { return m_text; }

private:
    QString m_text;
};

// The file name of the service's settings, in the system directory.
inline const QString DncConfigName = QStringLiteral("Dnc.cfg");

// Reads "Dnc.cfg" at path: the suite's line format, one line "Machine : N" or
// "Machine : N, DIRECTORY" per served machine, ended by "******". Lines with other labels are
// left for later additions; an empty line is skipped. "Request Form : N, TEXT" gives served
// machine N another form of request ("*" for the name). A missing or unreadable file, a machine
// line without a number of 1 or more, a directory that is not a plain name, or the same
// machine twice, a request form for a machine not served or without one "*" raises DncConfigError naming the
// file and the line.
[[nodiscard]] DncConfig ReadDncConfig(const FileSystem& files, const QString& path);

} // namespace kestrova
