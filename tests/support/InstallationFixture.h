#pragma once

#include "Frontend/Session.h"
#include "QtPrinters.h"
#include "RecordingMessageService.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

namespace kestrova::testing {

// A whole installation in a temporary directory, as the tests of every subsystem use it:
//
//   C: (fixed)      <tmp>/c          the suite: program and start directory "C:\Kestrova\",
//                                    set-up directory "C:\Kestrova\Setup\", and the machines'
//                                    working directories below "C:\Jobs\".
//   A: (removable)  <tmp>/floppy     a floppy drive with a disk in it
//   E: (removable)  <tmp>/usb        a stick
//   F: (fixed)      <tmp>/share      a fixed drive (never offered in drive lists)
//   G: (removable)  <tmp>/no-disk    mapped, but nothing there: not ready
//
// Machines of `Machine.lst`:
//   1 "Trumpf Punch 5000"      PUNCH1  punching (type 10), metric, nesting switched on
//   2 "Rainer Combi 1250"      RAINER  punching and profiling (11), Rainer floppy variant 2
//   3 "Laser 3030 Terminal"    LASER   profiling (1), imperial, a Kestrova terminal control
//
// The current machine is 1, its current directory "Parts". Tests change any file before Load().
class InstallationFixture {
public:
    InstallationFixture();
    ~InstallationFixture();

    // The host directory of the temporary tree, and of the start directory C:\Kestrova.
    [[nodiscard]] QString Root() const;
    [[nodiscard]] QString StartDir() const;
    // The host path of a path on C:, A:, E:, F: or G:, exactly as spelled (no lookup).
    [[nodiscard]] QString Host(const QString& systemPath) const;

    // Writing and reading files by their system path, as spelled; parents are created.
    void Write(const QString& systemPath, const QByteArray& bytes) const;
    // Lines each ended by CR LF.
    void WriteLines(const QString& systemPath, const QStringList& lines) const;
    [[nodiscard]] QByteArray Read(const QString& systemPath) const;
    [[nodiscard]] QStringList ReadLines(const QString& systemPath) const;
    [[nodiscard]] bool OnDisk(const QString& systemPath) const;
    void Remove(const QString& systemPath) const;
    void MakeDir(const QString& systemPath) const;
    // A program for the host to run: a shell script with the given body, marked executable.
    // It runs in the host directory of the installation's current directory.
    void WriteProgram(const QString& systemPath, const QByteArray& scriptBody) const;

    // The installation as the program sees it; made on first use, so that tests can change
    // "Devices.cfg" first.
    [[nodiscard]] FileSystem& Files();
    [[nodiscard]] RecordingMessageService& Messages() { return m_messages; }
    [[nodiscard]] GlobalSettings& Settings() { return m_settings; }
    [[nodiscard]] Session& session();

    // The environment load and the machine load, as start-up runs them. Throws what they throw.
    void Load();

    // Where the environment load looks for a PDF viewer when "Acrobat.cfg" is missing: by
    // default an empty directory of the fixture, so that the host's own viewers never count.
    QStringList PdfSearchDirs;

private:
    QTemporaryDir m_dir;
    std::unique_ptr<FileSystem> m_files;
    RecordingMessageService m_messages;
    GlobalSettings m_settings;
    std::unique_ptr<Session> m_session;
};

} // namespace kestrova::testing
