// "Kestrova.cfg" as a person may leave it: read it, and what is read survives the rewrite.
#include "Frontend/Session.h"
#include "FuzzSupport.h"
#include "RecordingMessageService.h"
#include "platform/Blanks.h"
#include "settings/KestrovaCfg.h"

using namespace kestrova;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static fuzz::ScratchDrive drive;
    static testing::RecordingMessageService messages;
    drive.Put(QStringLiteral("Kestrova.cfg"), fuzz::Bytes(data, size));

    GlobalSettings settings;
    Session session{settings, drive.Files(), messages};
    try {
        ReadKestrovaCfg(session);
    } catch (const SystemError& e) {
        // A short file or a machine number beyond the 16-bit range: named, never a crash.
        KESTROVA_FUZZ_CHECK(e.kind() == SystemError::Kind::InputPastEnd ||
                            e.kind() == SystemError::Kind::Overflow);
        KESTROVA_FUZZ_CHECK(e.text().contains(QStringLiteral("Kestrova.cfg")));
        return 0;
    }
    for (const QString* path : {&settings.SystemPath, &settings.SetupPath, &settings.RootPath})
        KESTROVA_FUZZ_CHECK(path->endsWith(u'\\'));
    KESTROVA_FUZZ_CHECK(settings.MachineNumber >= 1);
    KESTROVA_FUZZ_CHECK(!settings.CurrentDir.contains(u':'));
    KESTROVA_FUZZ_CHECK(settings.CurrentDir == TrimBlanks(settings.CurrentDir));

    // The directory selection rewrites the file from these fields; read again, they are the same.
    settings.ProgramPath = QStringLiteral("C:\\");
    const GlobalSettings read = settings;
    WriteKestrovaCfg(session);
    GlobalSettings again;
    Session second{again, drive.Files(), messages};
    ReadKestrovaCfg(second);
    KESTROVA_FUZZ_CHECK(again.SystemPath == read.SystemPath);
    KESTROVA_FUZZ_CHECK(again.SetupPath == read.SetupPath);
    KESTROVA_FUZZ_CHECK(again.RootPath == read.RootPath);
    KESTROVA_FUZZ_CHECK(again.MachineNumber == read.MachineNumber);
    KESTROVA_FUZZ_CHECK(again.CurrentDir == read.CurrentDir);
    return 0;
}
