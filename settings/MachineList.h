#pragma once

#include "Frontend/GlobalSettings.h"
#include "platform/FileSystem.h"

#include <QList>
#include <QStringList>

namespace kestrova {

struct MachineList {
    QList<MachineRecord> table{MachineRecord{}}; // index from 1; element 0 holds the count
    Int16 count = 0;
    QStringList warnings; // items that ended the list early, naming the file
};

// Reads `Machine.lst` or `Reverse.lst`: a number, then four texts, then the next number. The list
// ends before a number item that is "******", empty or below 1, or at the end of the file. A
// record cut off by the end of the file is "Input past end of file"; a number beyond the 16-bit
// range is "Overflow"; both name the file.
[[nodiscard]] MachineList ReadMachineList(const FileSystem& files, const QString& path);

} // namespace kestrova
