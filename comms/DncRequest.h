#pragma once

#include "Frontend/GlobalSettings.h"
#include "platform/FileSystem.h"

#include <QByteArray>
#include <QString>
#include <optional>

namespace kestrova {

// A request from a machine control: a received program whose only line is "(PRG=NAME)",
// "(PRG=DIR\NAME)" or "(DIR)". A program that merely carries such a comment among its blocks is
// no request.
struct DncRequest {
    enum class Kind { Program, List };
    Kind What = Kind::Program;
    QString Directory; // as asked, "" when the request names none
    QString Name;      // as asked
};

// How a machine's control asks for a program: the text before and after the name, "(PRG=" and
// ")" unless "Dnc.cfg" gives the machine another form. Compared without regard to case.
struct DncRequestForm {
    QString Before = QStringLiteral("(PRG=");
    QString After = QStringLiteral(")");
    friend bool operator==(const DncRequestForm&, const DncRequestForm&) = default;
};

// A form as "Dnc.cfg" writes it, "*" standing for the name: "(PRG=*)", "(PROGRAM *)". Nothing
// when the text holds no "*" or more than one, or nothing before it.
[[nodiscard]] std::optional<DncRequestForm> ParseDncRequestForm(const QString& text);

// The request a received program makes, if it is one. Blank lines and lines of "%" alone (the
// tape marks around a program) do not count.
[[nodiscard]] std::optional<DncRequest> ReadDncRequest(const QByteArray& program,
                                                       const DncRequestForm& form = {});

// What the service sends back, as a program of the machine.
struct DncAnswer {
    QString Directory; // where the program sent lies, for the header
    QString Program;   // its name without extension, for the header and the log
    QByteArray Text;   // the program's bytes as stored
    QString Result;    // the transfer log's result: "sent on request", "not found: ..."
};

// Answers a request of the machine whose directory is machineDir: the program found in the
// directory the request names, or else in the machine's data directories in name order; the
// list of the machine's programs; or a short comment program saying that nothing was found. A
// name that is not a plain name, or a directory that is not one of the machine's, finds nothing:
// nothing outside the machine's tree is ever read.
[[nodiscard]] DncAnswer AnswerDncRequest(const FileSystem& files, const GlobalSettings& g,
                                         const QString& machineDir, const DncRequest& request);

} // namespace kestrova
