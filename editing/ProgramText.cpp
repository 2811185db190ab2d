#include "editing/ProgramText.h"

#include "editing/ProgramLines.h"
#include "filestore/HistoryOperations.h"
#include "filestore/ProgramHistory.h"

#include <algorithm>

namespace kestrova {

namespace {

QString Temporary(const Session& session, const char* name) {
    return session.settings.ProgramPath + QLatin1String(name);
}

bool StartsProgram(QByteArrayView line) {
    return !line.isEmpty() && (line.front() == '%' || line.front() == 'O' || line.front() == 'o');
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
            QByteArrayView first;
            while (!in.AtEnd()) {
                first = TrimBlanks(in.ReadLine());
                if (!first.isEmpty())
                    break;
            }
            // Only the first block may be the program start; it keeps its text and uses no number.
            if (StartsProgram(first)) {
                char* to = out.Room(first.size());
                out.EndLine(std::copy(first.begin(), first.end(), to));
            } else {
                out.EndLine(numbers.Number(first, out.Room(first.size() + numbers.NWord().size())));
                numbers.Advance();
            }
            while (!in.AtEnd()) {
                const QByteArrayView line = in.ReadLine();
                out.EndLine(numbers.Number(line, out.Room(line.size() + numbers.NWord().size())));
                numbers.Advance();
            }
        },
        progress, [&] { KeepPreviousVersion(session, path, Renumbered); });
}

void StripNumbers(Session& session, const QString& path, const RewriteProgress& progress) {
    RewriteProgram(
        session.files, path, Temporary(session, "Numbers.tmp"),
        [](ProgramInput& in, ProgramOutput& out) {
            while (!in.AtEnd()) {
                const QByteArrayView line = in.ReadLine();
                out.EndLine(StripLine(line, out.Room(line.size())));
            }
        },
        progress, [&] { KeepPreviousVersion(session, path, NumbersStripped); });
}

void RemoveSpaces(Session& session, const QString& path, const RewriteProgress& progress) {
    RewriteProgram(
        session.files, path, Temporary(session, "Spaces.tmp"),
        [](ProgramInput& in, ProgramOutput& out) {
            while (!in.AtEnd()) {
                // Lines left empty are dropped.
                const QByteArrayView line = in.ReadLine();
                char* to = out.Room(line.size());
                char* end = RemoveAllSpaces(line, to);
                if (end != to)
                    out.EndLine(end);
            }
        },
        progress, [&] { KeepPreviousVersion(session, path, SpacesRemoved); });
}

} // namespace kestrova
