#include "comms/DncConfig.h"

#include "filestore/Names.h"
#include "platform/Blanks.h"
#include "platform/TextFile.h"
#include "settings/SettingsFile.h"
#include "settings/SettingsLine.h"

#include <algorithm>

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
    struct FormLine {
        int Number;
        QString Text;
        int Line;
    };
    QList<FormLine> forms;
    for (int index = 0; index < lines.size(); ++index) {
        const int lineNumber = index + 1;
        const QString line = TrimBlanks(lines.at(index));
        if (line == EndMarker)
            break;
        if (line.isEmpty() || !HasColon(line))
            continue;
        const QString label = TrimBlanks(line.left(line.indexOf(u':')));
        const bool machineLine = label.compare(QLatin1String("Machine"), Qt::CaseInsensitive) == 0;
        const bool formLine = label.compare(QLatin1String("Request Form"), Qt::CaseInsensitive) == 0;
        if (!machineLine && !formLine)
            continue;
        const QString value = ValueOfLine(line);
        const qsizetype comma = value.indexOf(u',');
        const QString numberText = TrimBlanks(comma < 0 ? value : value.left(comma));
        bool ok = false;
        const int number = numberText.toInt(&ok);
        if (!ok || number < 1)
            Refuse(path, lineNumber, QStringLiteral("\"%1\" is not a machine number").arg(numberText));
        if (formLine) {
            forms << FormLine{number, comma < 0 ? QString() : value.mid(comma + 1), lineNumber};
            continue;
        }
        DncMachine machine{number, comma < 0 ? QString() : TrimBlanks(value.mid(comma + 1)), lineNumber, {}};
        if (comma >= 0 && !AcceptableNewName(machine.Directory))
            Refuse(path, lineNumber, QStringLiteral("\"%1\" is not a directory name").arg(machine.Directory));
        for (const DncMachine& earlier : config.Machines)
            if (earlier.Number == number)
                Refuse(
                    path, lineNumber,
                    QStringLiteral("machine %1 is served already (line %2)").arg(number).arg(earlier.Line));
        config.Machines << machine;
    }
    // A form may stand before or after its machine's line.
    for (const FormLine& form : forms) {
        const std::optional<DncRequestForm> parsed = ParseDncRequestForm(form.Text);
        if (!parsed)
            Refuse(path, form.Line,
                   QStringLiteral(
                       "\"%1\" is not a request form (one \"*\" stands for the name, after some text)")
                       .arg(TrimBlanks(form.Text)));
        auto served = std::find_if(config.Machines.begin(), config.Machines.end(),
                                   [&](const DncMachine& m) { return m.Number == form.Number; });
        if (served == config.Machines.end())
            Refuse(path, form.Line, QStringLiteral("machine %1 is not served").arg(form.Number));
        served->Request = *parsed;
    }
    return config;
}

} // namespace kestrova
