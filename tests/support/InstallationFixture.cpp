#include "InstallationFixture.h"

#include "platform/TextFile.h"
#include "settings/EnvironmentLoad.h"
#include "settings/MachineLoad.h"
#include "settings/SettingsFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <stdexcept>

namespace kestrova::testing {

namespace {

QByteArray Lines(const QStringList& lines) {
    QByteArray bytes;
    for (const QString& line : lines)
        bytes += ToBytes(line) + "\r\n";
    return bytes;
}

} // namespace

InstallationFixture::InstallationFixture() {
    if (!m_dir.isValid())
        throw std::runtime_error("cannot make a temporary directory");
    for (const char* dir : {"c", "floppy", "usb", "share", "no-viewers"})
        QDir(Root()).mkpath(QLatin1String(dir));
    PdfSearchDirs = {Root() + QStringLiteral("/no-viewers")};

    WriteLines(QStringLiteral("C:\\Kestrova\\Devices.cfg"),
               {QStringLiteral("C: fixed %1/c").arg(Root()), QStringLiteral("A: removable %1/floppy").arg(Root()),
                QStringLiteral("E: removable %1/usb").arg(Root()), QStringLiteral("F: fixed %1/share").arg(Root()),
                QStringLiteral("G: removable %1/no-disk").arg(Root()), QStringLiteral("******")});

    // The program directory.
    WriteLines(QStringLiteral("C:\\Kestrova\\Kestrova.cfg"),
               {QStringLiteral("C:\\Kestrova"), QStringLiteral("C:\\Kestrova\\Setup"), QStringLiteral("C:\\Jobs"),
                QStringLiteral("1"), QStringLiteral("Parts"), QStringLiteral("******")});
    for (const char* exe : {"Kestrdrw.exe", "Kestrprg.exe", "Kestrnst.exe", "Kestrrvs.exe", "Kestrshp.exe",
                            "Kestrstk.exe", "Kestrtol.exe", "Setman.exe"})
        Write(QStringLiteral("C:\\Kestrova\\") + QLatin1String(exe), "stand-in\n");
    WriteLines(QStringLiteral("C:\\Kestrova\\Machine.lst"),
               {QStringLiteral("1,\"Trumpf Punch 5000\",\"PUNCH1\",\"Setman\",\"P\""),
                QStringLiteral("2,\"Rainer Combi 1250\",\"RAINER\",\"Setman\",\"R\""),
                QStringLiteral("3,\"Laser 3030 Terminal\",\"LASER\",\"Setman\",\"L\""), QStringLiteral("******")});
    WriteLines(QStringLiteral("C:\\Kestrova\\Reverse.lst"),
               {QStringLiteral("1,\"Reverse Fanuc\",\"REVFANUC\",\"\",\"\""), QStringLiteral("******")});
    WriteLines(QStringLiteral("C:\\Kestrova\\Editor.cfg"), {QStringLiteral("Notepad.exe")});
    WriteLines(QStringLiteral("C:\\Kestrova\\Backup.cfg"), {QString()});
    WriteLines(QStringLiteral("C:\\Kestrova\\Nesting.cfg"), {QStringLiteral("C:\\Kestrova\\Nesting.key")});
    Write(QStringLiteral("C:\\Kestrova\\Nesting.key"), "licensed\n");
    WriteLines(QStringLiteral("C:\\Kestrova\\Acrobat.cfg"),
               {QStringLiteral("C:\\Kestrova\\Reader\\Viewer.exe"), QStringLiteral("******")});
    Write(QStringLiteral("C:\\Kestrova\\Reader\\Viewer.exe"), "viewer\n");
    Write(QStringLiteral("C:\\Kestrova\\Manuals\\Frontend.pdf"), "%PDF-1.4\n");
    WriteLines(QStringLiteral("C:\\Kestrova\\Kestrova.cms"),
               {QStringLiteral("Title                                        : Background receive"),
                QStringLiteral("Port                                         : 0"),
                QStringLiteral("Baud                                         : 9600"),
                QStringLiteral("Parity                                       : E"),
                QStringLiteral("Data Bits                                    : 7"),
                QStringLiteral("Stop Bits                                    : 2"),
                QStringLiteral("Handshake                                    : XON/XOFF"),
                QStringLiteral("Start Mode                                   : "),
                QStringLiteral("Start Character                              : "),
                QStringLiteral("Leader                                       : "),
                QStringLiteral("Line End                                     : 1,13,1,10"),
                QStringLiteral("Trailer                                      : 1,37"),
                QStringLiteral("End Sequence                                 : "),
                QStringLiteral("Send Filter                                  : "),
                QStringLiteral("Receive Filter                               : 0,127"),
                QStringLiteral("Receive Time Out                             : 0")});

    // The machine data files.
    const QString data = QStringLiteral("C:\\Kestrova\\Setup\\Data\\");
    struct Machine {
        const char* dir;
        const char* units;
        const char* type;
        const char* prm;
        const char* control;
    };
    const Machine machines[] = {{"PUNCH1", "Metric", "10", "Yes", "Fanuc 6M"},
                                {"RAINER", "Metric", "11", "No", "Rainer (V2)"},
                                {"LASER", "Imperial", "1", "No", "Kestrova Terminal"}};
    for (const Machine& m : machines) {
        const QString stem = data + QLatin1String(m.dir) + u'.';
        WriteLines(stem + "msr", {LabelledLine("Measurement System", m.units), QStringLiteral("******")});
        WriteLines(stem + "mch", {LabelledLine("Machine Name", m.dir), LabelledLine("Machine Type", m.type),
                                  LabelledLine("X Travel", "2500"), LabelledLine("Y Travel", "1250"),
                                  QStringLiteral("******")});
        WriteLines(stem + "prm", {LabelledLine("Parameters Enabled ? (Yes / No)", m.prm), QStringLiteral("******")});
        WriteLines(stem + "cms",
                   {LabelledLine("Control Type", m.control), LabelledLine("Port", "1"), LabelledLine("Baud", "9600"),
                    LabelledLine("Parity", "E"), LabelledLine("Data Bits", "7"), LabelledLine("Stop Bits", "2"),
                    LabelledLine("Handshake", "XON/XOFF"), LabelledLine("Start Mode", "AUTO"),
                    LabelledLine("Start Character", "17"), LabelledLine("Leader", "50,0"),
                    LabelledLine("Line End", "1,13,1,10"), LabelledLine("Trailer", "1,37"),
                    LabelledLine("End Sequence", ""), LabelledLine("Send Filter", ""),
                    LabelledLine("Receive Filter", "0,127"), LabelledLine("Receive Time Out", "5000")});
        for (const char* ext : {"stn", "trt", "drp", "mlt", "dgt", "arp", "usr", "wrd", "lyt", "tme", "pst", "rvs"})
            WriteLines(stem + QLatin1String(ext), {LabelledLine("Owned by the packages", ext), QStringLiteral("******")});
    }
    WriteLines(data + "PUNCH1.nst", {LabelledLine("Nesting ? (Yes / No)", "Yes"), QStringLiteral("******")});

    // The machines' working directories.
    const QString punch = QStringLiteral("C:\\Jobs\\PUNCH1\\");
    for (const char* ext : {"drw", "dxf", "prg", "inf", "rpt", "stp", "nst", "usr", "seq"})
        WriteLines(punch + "Parts\\X." + QLatin1String(ext), {QStringLiteral("X ") + QLatin1String(ext)});
    WriteLines(punch + "Parts\\X", {QStringLiteral("X without extension")});
    WriteLines(punch + "Parts\\Bracket.drw", {QStringLiteral("drawing")});
    WriteLines(punch + "Parts\\Bracket.prg", {QStringLiteral("%"), QStringLiteral("N10 G90"), QStringLiteral("%")});
    WriteLines(punch + "Parts\\bracket-2.PRG", {QStringLiteral("%"), QStringLiteral("G01 X10"), QStringLiteral("%")});
    WriteLines(punch + "Parts\\Cover.prg", {QStringLiteral("%"), QStringLiteral("G00 X0 Y0"), QStringLiteral("%")});
    WriteLines(punch + "Kestrova\\Sample.prg", {QStringLiteral("%"), QStringLiteral("M30"), QStringLiteral("%")});
    WriteLines(punch + "Archive\\Old.drw", {QStringLiteral("old")});
    WriteLines(punch + "EXSUBS\\Sub1.prg", {QStringLiteral("sub")});
    WriteLines(QStringLiteral("C:\\Jobs\\RAINER\\Kestrova\\Panel.prg"), {QStringLiteral("%"), QStringLiteral("%")});
    WriteLines(QStringLiteral("C:\\Jobs\\LASER\\Kestrova\\Plate.prg"), {QStringLiteral("%"), QStringLiteral("%")});
}

InstallationFixture::~InstallationFixture() = default;

QString InstallationFixture::Root() const { return m_dir.path(); }

QString InstallationFixture::StartDir() const { return Host(QStringLiteral("C:\\Kestrova")); }

QString InstallationFixture::Host(const QString& systemPath) const {
    if (systemPath.size() < 2 || systemPath.at(1) != u':')
        throw std::invalid_argument("a fixture path starts with its drive");
    QString base;
    switch (systemPath.at(0).toUpper().unicode()) {
    case 'C':
        base = QStringLiteral("c");
        break;
    case 'A':
        base = QStringLiteral("floppy");
        break;
    case 'E':
        base = QStringLiteral("usb");
        break;
    case 'F':
        base = QStringLiteral("share");
        break;
    case 'G':
        base = QStringLiteral("no-disk");
        break;
    default:
        throw std::invalid_argument("the fixture maps C:, A:, E:, F: and G: only");
    }
    QString rest = systemPath.mid(2);
    rest.replace(u'\\', u'/');
    return QDir::cleanPath(Root() + u'/' + base + u'/' + rest);
}

void InstallationFixture::Write(const QString& systemPath, const QByteArray& bytes) const {
    const QString host = Host(systemPath);
    QDir().mkpath(QFileInfo(host).path());
    QFile f(host);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate) || f.write(bytes) != bytes.size())
        throw std::runtime_error(("cannot write " + host).toStdString());
}

void InstallationFixture::WriteLines(const QString& systemPath, const QStringList& lines) const {
    Write(systemPath, Lines(lines));
}

QByteArray InstallationFixture::Read(const QString& systemPath) const {
    QFile f(Host(systemPath));
    if (!f.open(QIODevice::ReadOnly))
        throw std::runtime_error(("cannot read " + Host(systemPath)).toStdString());
    return f.readAll();
}

QStringList InstallationFixture::ReadLines(const QString& systemPath) const {
    QString text = FromBytes(Read(systemPath));
    if (text.endsWith(QLatin1String("\r\n")))
        text.chop(2);
    return text.split(QStringLiteral("\r\n"));
}

bool InstallationFixture::OnDisk(const QString& systemPath) const { return QFileInfo::exists(Host(systemPath)); }

void InstallationFixture::Remove(const QString& systemPath) const {
    const QString host = Host(systemPath);
    if (QFileInfo(host).isDir())
        QDir(host).removeRecursively();
    else
        QFile::remove(host);
}

void InstallationFixture::MakeDir(const QString& systemPath) const { QDir().mkpath(Host(systemPath)); }

void InstallationFixture::WriteProgram(const QString& systemPath, const QByteArray& scriptBody) const {
    Write(systemPath, "#!/bin/sh\n" + scriptBody + "\n");
    QFile::setPermissions(Host(systemPath), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                                                QFile::ReadGroup | QFile::ExeGroup);
}

FileSystem& InstallationFixture::Files() {
    if (!m_files)
        m_files = std::make_unique<FileSystem>(FileSystem::AtStartDirectory(StartDir()));
    return *m_files;
}

Session& InstallationFixture::session() {
    if (!m_session)
        m_session = std::make_unique<Session>(Session{m_settings, Files(), m_messages});
    return *m_session;
}

void InstallationFixture::Load() {
    LoadEnvironment(session(), PdfSearchDirs);
    LoadMachine(session(), m_settings.MachineNumber, m_settings.CurrentDir);
}

} // namespace kestrova::testing
