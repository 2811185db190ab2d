// One rewrite of one program, as the edit form runs it, for program-text.sh: the program is
// C:\Work.prg of an installation whose "Devices.cfg" lies in the current directory, and the
// temporary file goes to C:\ as the program directory.
//   bench_program_text renumber|strip|spaces
#include "editing/ProgramText.h"

#include <QDir>
#include <cstdio>
#include <cstring>

using namespace kestrova;

namespace {

class SilentMessages final : public MessageService {
public:
    Answer Show(const Message& message) override {
        std::fprintf(stderr, "%s\n", qPrintable(message.text));
        return Answer::Ok;
    }
    void Beep() override {}
    void SetBusy(bool) override {}
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    FileSystem files = FileSystem::AtStartDirectory(QDir::currentPath());
    GlobalSettings settings;
    settings.ProgramPath = QStringLiteral("C:\\");
    SilentMessages messages;
    Session session{settings, files, messages};
    const QString program = QStringLiteral("C:\\Work.prg");
    try {
        if (std::strcmp(argv[1], "renumber") == 0)
            RenumberProgram(session, program, 0, 1, 0);
        else if (std::strcmp(argv[1], "strip") == 0)
            StripNumbers(session, program);
        else if (std::strcmp(argv[1], "spaces") == 0)
            RemoveSpaces(session, program);
        else
            return 2;
    } catch (const RewriteError& error) {
        std::fprintf(stderr, "%s\n", qPrintable(error.text()));
        return 1;
    }
    return 0;
}
