#include "editing/ProgramRewrite.h"

#include "platform/MessageService.h"

namespace kestrova {

namespace {

// Progress is told about every this many bytes: often enough for a smooth bar, rarely enough
// to cost nothing next to the rewrite itself.
constexpr qint64 ProgressStep = 1 << 18;
// The new text goes to the disk in writes of about this size.
constexpr qsizetype WriteChunk = 1 << 18;

QString Unchanged(const QString& program) {
    return QStringLiteral("The Program %1 Is Unchanged !").arg(Quoted(program));
}

QString NewTextIn(const QString& program, const QString& temporary) {
    return QStringLiteral("The New Text Of %1 Is In %2 !").arg(Quoted(program), Quoted(temporary));
}

} // namespace

RewriteError::RewriteError(const SystemError& cause, const QString& where)
    : std::runtime_error((cause.text() + u'\n' + where).toStdString()), m_kind(cause.kind()),
      m_text(cause.text() + u'\n' + where) {}

ProgramInput::ProgramInput(const FileSystem& files, const QString& program, const RewriteProgress& progress)
    : m_reader(files, program), m_progress(progress) {
    if (m_progress) {
        m_total = files.Length(program);
        m_progress(0, m_total);
    }
}

void ProgramInput::Finish() {
    if (m_progress)
        m_progress(m_total, m_total);
}

QByteArrayView ProgramInput::ReadLine() {
    const QByteArrayView line = m_reader.ReadLineBytes();
    if (m_progress) {
        // The line end's length is not known here: one byte is counted, so the figure never
        // runs ahead of the truth.
        m_done = qMin(m_total, m_done + line.size() + 1);
        if (m_done - m_reported >= ProgressStep) {
            m_reported = m_done;
            m_progress(m_done, m_total);
        }
    }
    return line;
}

ProgramOutput::ProgramOutput(TextWriter& writer)
    : m_writer(writer), m_pending(WriteChunk, Qt::Uninitialized) {}

char* ProgramOutput::Room(qsizetype length) {
    const qsizetype needed = length + 2;
    if (m_used + needed > m_pending.size()) {
        Flush();
        if (needed > m_pending.size())
            m_pending.resize(needed); // a line longer than a whole write
    }
    return m_pending.data() + m_used;
}

void ProgramOutput::EndLine(char* end) {
    *end++ = '\r';
    *end++ = '\n';
    m_used = end - m_pending.constData();
}

void ProgramOutput::Flush() {
    m_writer.WriteBytes(QByteArrayView(m_pending.constData(), m_used));
    m_used = 0;
}

void RewriteProgram(FileSystem& files, const QString& program, const QString& temporary,
                    const std::function<void(ProgramInput&, ProgramOutput&)>& transform,
                    const RewriteProgress& progress, const std::function<void()>& keepOld) {
    const QString programPath = files.FullPath(program);
    const QString temporaryPath = files.FullPath(temporary);

    // 1. The new text: until it is complete and closed, the program is not touched.
    try {
        TextWriter writer(files, temporaryPath, TextWriter::Mode::Create);
        {
            ProgramInput input(files, programPath, progress);
            ProgramOutput output(writer);
            transform(input, output);
            output.Flush();
            input.Finish();
        }
        writer.Close();
    } catch (const SystemError& error) {
        // A block number out of range names no file of its own: it belongs to the program.
        if (error.subject().isEmpty())
            throw RewriteError(SystemError(error.kind(), programPath), Unchanged(programPath));
        throw RewriteError(error, Unchanged(programPath));
    }

    // 2. The new text takes the program's place whole: the program keeps its old text until
    // then, and a link to it stays a link.
    if (keepOld)
        keepOld();
    try {
        files.MoveOver(temporaryPath, programPath);
    } catch (const SystemError& error) {
        throw RewriteError(error, Unchanged(programPath) + u'\n' + NewTextIn(programPath, temporaryPath));
    }

    // 3. The temporary file is no longer needed: gone already where it was renamed into place.
    try {
        if (files.Exists(temporaryPath))
            files.Delete(temporaryPath);
    } catch (const SystemError& error) {
        throw RewriteError(error,
                           QStringLiteral("The Program %1 Has Its New Text !").arg(Quoted(programPath)));
    }
}

} // namespace kestrova
