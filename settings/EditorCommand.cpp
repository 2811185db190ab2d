#include "settings/EditorCommand.h"

#include "platform/Blanks.h"
#include "platform/TextFile.h"
#include "settings/SettingsFile.h"

namespace kestrova {

QString EditorCommand(const QString& editorLine) {
    const QString line = TrimBlanks(editorLine);
    if (line.isEmpty())
        return QStringLiteral("Notepad.exe ");
    const qsizetype blank = line.indexOf(u' ');
    if (blank >= 0)
        return line.left(blank + 1);
    return line + u' ';
}

std::unique_ptr<StartedProgram> StartEditorOn(Session& session, ProgramLauncher& launcher,
                                              const QString& file) {
    FileSystem& files = session.files;
    if (!files.Exists(file)) {
        TextWriter empty(files, file, TextWriter::Mode::Create);
        empty.Close();
    }
    const QString command =
        EditorCommand(ReadFirstLine(files, session.settings.ProgramPath + QStringLiteral("Editor.cfg")));
    return launcher.StartEditor(command, file);
}

} // namespace kestrova
