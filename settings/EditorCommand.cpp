#include "settings/EditorCommand.h"

namespace kestrova {

QString EditorCommand(const QString& editorLine) {
    const QString line = editorLine.trimmed();
    if (line.isEmpty())
        return QStringLiteral("Notepad.exe ");
    const qsizetype blank = line.indexOf(u' ');
    if (blank >= 0)
        return line.left(blank + 1);
    return line + u' ';
}

} // namespace kestrova
