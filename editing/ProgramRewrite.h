#pragma once

#include "platform/Errors.h"
#include "platform/FileSystem.h"
#include "platform/TextFile.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <functional>
#include <optional>
#include <stdexcept>

namespace kestrova {

// How far the rewrite of one program has come: bytes read and the program's length.
using RewriteProgress = std::function<void(qint64 done, qint64 total)>;

// A rewrite that could not finish. The program is never lost on the way: it is either as it
// was, or its complete new text is in the temporary file; the text says which, naming the file
// and the reason.
class RewriteError : public std::runtime_error {
public:
    RewriteError(const SystemError& cause, const QString& where);
    [[nodiscard]] const QString& text() const { return m_text; }
    [[nodiscard]] SystemError::Kind kind() const { return m_kind; }

private:
    SystemError::Kind m_kind;
    QString m_text;
};

// The lines of the program being rewritten, read one at a time; reports how far it has come.
class ProgramInput {
public:
    ProgramInput(const FileSystem& files, const QString& program, const RewriteProgress& progress);
    [[nodiscard]] bool AtEnd() { return m_reader.AtEnd(); }
    // The next line's bytes, valid until the next read.
    [[nodiscard]] QByteArrayView ReadLine();
    // Every line has been read.
    void Finish();

private:
    LineReader m_reader;
    const RewriteProgress& m_progress;
    qint64 m_total = 0;
    qint64 m_done = 0;
    qint64 m_reported = 0;
};

// The new text, gathered into large writes of single-byte lines: a line is written at Room()
// and ended by EndLine() with CR LF.
class ProgramOutput {
public:
    explicit ProgramOutput(TextWriter& writer);
    // Where the next line goes, with room for length bytes and the line end.
    [[nodiscard]] char* Room(qsizetype length);
    // The line written at Room() ends before end.
    void EndLine(char* end);
    void Flush();

private:
    TextWriter& m_writer;
    QByteArray m_pending;
    qsizetype m_used = 0;
};

// The rewrite rule of the system: the new text goes to the temporary file (created, or emptied),
// which then takes the program's place and is gone: renamed over it where both lie on one
// device, else copied over it and deleted. The program holds its old text until the new one is
// whole and on the disk, and a link to it stays a link.
// transform reads the program's lines and writes the new ones; keepOld is called once the new
// text is whole, just before it takes the program's place (the history keeps the old text there).
// Any failure raises RewriteError.
void RewriteProgram(FileSystem& files, const QString& program, const QString& temporary,
                    const std::function<void(ProgramInput&, ProgramOutput&)>& transform,
                    const RewriteProgress& progress, const std::function<void()>& keepOld = {});

} // namespace kestrova
