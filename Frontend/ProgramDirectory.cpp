#include "Frontend/ProgramDirectory.h"

#include "platform/DemoInstallation.h"
#include "platform/Errors.h"

#include <QDir>

namespace kestrova {

QString ProgramDirectoryToStart(const QStringList& arguments, const QString& currentHostDir,
                                MessageService& messages, const DemoOffer& demo) {
    const QString given = arguments.isEmpty() ? QString() : arguments.first().trimmed();
    const QString dir =
        QDir::cleanPath(QDir(currentHostDir).absoluteFilePath(given.isEmpty() ? QStringLiteral(".") : given));
    if (HoldsInstallation(dir))
        return dir;

    const QString missing =
        QStringLiteral("No Kestrova Installation In \"%1\" !\n"
                       "Start Kestrova with its program directory, the one that holds \"Kestrova.cfg\":\n"
                       "    kestrova /path/to/Kestrova")
            .arg(QDir::toNativeSeparators(dir));
    if (demo.demoHostDir.isEmpty()) {
        messages.Refuse(missing);
        return {};
    }
    if (messages.Ask(missing +
                     QStringLiteral("\nLay Out The Demo Installation In A Directory Of Your Choice ?")) !=
        Answer::Yes)
        return {};
    const QString target = demo.chooseDirectory ? demo.chooseDirectory() : QString();
    if (target.isEmpty())
        return {};
    try {
        return LayOutDemoInstallation(demo.demoHostDir, demo.standInHostPath, target);
    } catch (const SystemError& error) {
        messages.ShowError(error.text());
        return {};
    }
}

} // namespace kestrova
