#include "editing/ProgramText.h"

#include "editing/ProgramLines.h"

namespace kestrova {

namespace {

QString Temporary(const Session& session, const char* name) {
    return session.settings.ProgramPath + QLatin1String(name);
}

bool StartsProgram(QStringView line) {
    return !line.isEmpty() && (line.front() == u'%' || line.front().toUpper() == u'O');
}

} // namespace

void RenumberProgram(Session& session, const QString& path, Int16 start, Int16 increment, int width,
                     const RewriteProgress& progress) {
    RewriteProgram(
        session.files, path, Temporary(session, "Renumber.tmp"),
        [&](ProgramInput& in, ProgramOutput& out) {
            BlockNumbers numbers(start, increment, width);
            // Blank lines at the head are not written. An empty program leaves an empty line in
            // hand, which is numbered like any other.
            QString first;
            while (!in.AtEnd()) {
                first = in.ReadLine();
                if (!TrimBlanks(first).isEmpty())
                    break;
            }
            // Only the first block may be the program start; it keeps its text and uses no number.
            if (StartsProgram(TrimBlanks(first))) {
                out.Line(TrimBlanks(first));
            } else {
                out.Line(numbers.Number(first));
                numbers.Advance();
            }
            while (!in.AtEnd()) {
                out.Line(numbers.Number(in.ReadLine()));
                numbers.Advance();
            }
        },
        progress);
}

void StripNumbers(Session& session, const QString& path, const RewriteProgress& progress) {
    RewriteProgram(
        session.files, path, Temporary(session, "Numbers.tmp"),
        [](ProgramInput& in, ProgramOutput& out) {
            while (!in.AtEnd())
                out.Line(StripLine(in.ReadLine()));
        },
        progress);
}

void RemoveSpaces(Session& session, const QString& path, const RewriteProgress& progress) {
    RewriteProgram(
        session.files, path, Temporary(session, "Spaces.tmp"),
        [](ProgramInput& in, ProgramOutput& out) {
            while (!in.AtEnd()) {
                const QString line = RemoveAllSpaces(in.ReadLine());
                if (!line.isEmpty())
                    out.Line(line);
            }
        },
        progress);
}

} // namespace kestrova
