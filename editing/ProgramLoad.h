#pragma once

#include "editing/ProgramReader.h"
#include "platform/FileSystem.h"
#include "platform/TextFile.h"

#include <chrono>

namespace kestrova {

// A program file read into its drawing a slice at a time, so that a window goes on painting
// while a program of millions of blocks comes in. A file that cannot be opened raises its
// error, naming it, when the load is made; a read that fails raises it from Step.
class ProgramLoad {
public:
    ProgramLoad(const FileSystem& files, const QString& path, ReaderOptions options);

    // Reads lines for about the given time; true when the whole file is read.
    [[nodiscard]] bool Step(std::chrono::milliseconds budget);
    // How far it has come, 0 to 100.
    [[nodiscard]] int Percent() const;
    // The drawing of the whole file, once Step has said it is read; the load is spent.
    [[nodiscard]] ProgramDrawing Finish() { return m_reader.Finish(); }

private:
    LineReader m_lines;
    ProgramReader m_reader;
    qint64 m_length = 0;
    qint64 m_read = 0;
};

} // namespace kestrova
