#include "Frontend/DataFiles.h"

namespace kestrova {

namespace {

struct Item {
    const char* caption;
    const char* file; // a machine data file's extension, or a front-end file's name
    bool machineFile;
};

struct Group {
    const char* submenu;
    const char* control;
    QList<Item> items;
};

} // namespace

QList<DataFileEntry> DataFileEntries(const GlobalSettings& g) {
    static const QList<Group> groups{
        {"",
         "DataFileGeneral",
         {{"Text Editor", "Editor.cfg", false},
          {"Measurement System", "msr", true},
          {"Backup Software", "Backup.cfg", false}}},
        {"DataMenuMachine",
         "DataFileMachine",
         {{"Machine Specifications", "mch", true},
          {"Clamp Zones", "stn", true},
          {"Turret Layout", "trt", true}}},
        {"DataMenuDrawing",
         "DataFileDrawing",
         {{"Drawing Defaults", "drp", true},
          {"Multipart Defaults", "mlt", true},
          {"Digitiser Settings", "dgt", true}}},
        {"DataMenuProgram",
         "DataFileProgram",
         {{"Auto-Reposition", "arp", true},
          {"User Variables", "usr", true},
          {"Reserved Words", "wrd", true},
          {"Tool Definitions", "lyt", true},
          {"Timing Variables", "tme", true},
          {"Post Processor", "pst", true},
          {"Reverse Settings", "rvs", true}}},
        {"DataMenuComms",
         "DataFileComms",
         {{"CNC Communications", "cms", true}, {"Background Receive", "Kestrova.cms", false}}},
        {"DataMenuManuals",
         "DataFileManuals",
         {{"Acrobat", "Acrobat.cfg", false}, {"Manuals", "Manuals.cfg", false}}},
    };

    QList<DataFileEntry> entries;
    for (const Group& group : groups) {
        int index = 0;
        for (const Item& item : group.items) {
            const QString file = QString::fromLatin1(item.file);
            entries << DataFileEntry{QString::fromLatin1(group.submenu),
                                     QString::fromLatin1(group.control) + QString::number(++index),
                                     QString::fromLatin1(item.caption),
                                     item.machineFile ? MachineFile(g, file) : g.ProgramPath + file};
        }
    }
    return entries;
}

} // namespace kestrova
