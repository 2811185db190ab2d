#include "settings/MachineList.h"

#include "settings/ListRecordReader.h"
#include "settings/SettingsFile.h"
#include "settings/SettingsLine.h"

#include <cstdio>

namespace kestrova {

MachineList ReadMachineList(const FileSystem& files, const QString& path) {
    MachineList list;
    ListRecordReader reader(files, path);
    while (!reader.AtEnd()) {
        const QString item = reader.ReadItem();
        if (item == EndMarker)
            break;
        if (item.isEmpty()) {
            if (!reader.AtEnd()) {
                list.warnings << QStringLiteral(
                                     "%1: the list ends at an empty item; the lines after it are not read")
                                     .arg(reader.Path());
                std::fprintf(stderr, "kestrova: %s\n", qPrintable(list.warnings.last()));
            }
            break;
        }
        Int16 number;
        try {
            number = LeadingInt16(item);
        } catch (const OverflowError&) {
            throw OverflowError(reader.Path(), QStringLiteral("machine number \"%1\"").arg(item));
        }
        if (number < 1) {
            // Not an error of the list's own rules, but worth saying why the list stops here.
            list.warnings << QStringLiteral(
                                 "%1: the list ends at \"%2\", which is not a machine number of 1 or more")
                                 .arg(reader.Path(), item);
            std::fprintf(stderr, "kestrova: %s\n", qPrintable(list.warnings.last()));
            break;
        }
        MachineRecord record;
        record.number = number;
        record.field1 = reader.ReadItem();
        record.field2 = reader.ReadItem();
        record.field3 = reader.ReadItem();
        record.field4 = reader.ReadItem();
        list.table << record;
        list.count = Int16::From(list.count + 1);
    }
    list.table[0].number = list.count;
    return list;
}

} // namespace kestrova
