#include "editing/ProgramLoad.h"

namespace kestrova {

namespace {

// Lines read between two looks at the clock.
constexpr int LinesPerLook = 4096;

} // namespace

ProgramLoad::ProgramLoad(const FileSystem& files, const QString& path, ReaderOptions options)
    : m_lines(files, path), m_reader(options), m_length(files.Length(path)) {}

bool ProgramLoad::Step(std::chrono::milliseconds budget) {
    const auto until = std::chrono::steady_clock::now() + budget;
    do {
        for (int n = 0; n < LinesPerLook; ++n) {
            if (m_lines.AtEnd())
                return true;
            const QByteArrayView line = m_lines.ReadLineBytes();
            m_read += line.size() + 2; // the line end, as the system writes it
            m_reader.ReadLine(line);
        }
    } while (std::chrono::steady_clock::now() < until);
    return false;
}

int ProgramLoad::Percent() const {
    return m_length > 0 ? int(std::min<qint64>(100, m_read * 100 / m_length)) : 100;
}

} // namespace kestrova
