// `Machine.lst` as a person may leave it: a list, or an error that names the file.
#include "FuzzSupport.h"
#include "settings/MachineList.h"

using namespace kestrova;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static fuzz::ScratchDrive drive;
    drive.Put(QStringLiteral("Machine.lst"), fuzz::Bytes(data, size));
    try {
        const MachineList list = ReadMachineList(drive.Files(), QStringLiteral("C:\\Machine.lst"));
        KESTROVA_FUZZ_CHECK(list.count >= 0);
        KESTROVA_FUZZ_CHECK(list.table.size() == list.count + 1);
        KESTROVA_FUZZ_CHECK(list.table.at(0).number == list.count);
        for (qsizetype i = 1; i < list.table.size(); ++i)
            KESTROVA_FUZZ_CHECK(list.table.at(i).number >= 1);
        for (const QString& warning : list.warnings)
            KESTROVA_FUZZ_CHECK(warning.contains(QStringLiteral("Machine.lst")));
    } catch (const SystemError& e) {
        KESTROVA_FUZZ_CHECK(e.kind() == SystemError::Kind::InputPastEnd ||
                            e.kind() == SystemError::Kind::Overflow);
        KESTROVA_FUZZ_CHECK(e.text().contains(QStringLiteral("Machine.lst")));
    }
    return 0;
}
