#include "comms/DncConfig.h"

#include "filestore/Names.h"
#include "platform/Blanks.h"
#include "platform/TextFile.h"
#include "settings/SettingsFile.h"
#include "settings/SettingsLine.h"

namespace kestrova {

namespace {

[[noreturn]] void Refuse(const QString& path, int line, const QString& reason) {
    throw DncConfigError(QStringLiteral("%1, line %2: %3").arg(path).arg(line).arg(reason));
}

} // namespace

DncConfig ReadDncConfig(const FileSystem& files, const QString& path) {
    QStringList lines;
    try {
        lines = ReadAllLines(files, path);
    } catch (const SystemError& e) {
        throw DncConfigError(e.text());
    }
    DncConfig config;
    for (int index = 0; index < lines.size(); ++index) {
        const int lineNumber = index + 1;
        const QString line = TrimBlanks(lines.at(index));
        if (line == EndMarker)
            break;
        if (line.isEmpty() || !HasColon(line))
            continue;
        const QString label = TrimBlanks(line.left(line.indexOf(u':')));
        if (label.compare(QLatin1String("Machine"), Qt::CaseInsensitive) != 0)
            continue;
        const QString value = ValueOfLine(line);
        const qsizetype comma = value.indexOf(u',');
        const QString numberText = TrimBlanks(comma < 0 ? value : value.left(comma));
        bool ok = false;
        const int number = numberText.toInt(&ok);
        if (!ok || number < 1)
            Refuse(path, lineNumber, QStringLiteral("\"%1\" is not a machine number").arg(numberText));
        DncMachine machine{number, comma < 0 ? QString() : TrimBlanks(value.mid(comma + 1)), lineNumber};
        if (comma >= 0 && !AcceptableNewName(machine.Directory))
            Refuse(path, lineNumber, QStringLiteral("\"%1\" is not a directory name").arg(machine.Directory));
        for (const DncMachine& earlier : config.Machines)
            if (earlier.Number == number)
                Refuse(
                    path, lineNumber,
                    QStringLiteral("machine %1 is served already (line %2)").arg(number).arg(earlier.Line));
        config.Machines << machine;
    }
    return config;
}

} // namespace kestrova
