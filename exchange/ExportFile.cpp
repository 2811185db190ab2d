#include "exchange/ExportFile.h"

#include "editing/ProgramLines.h"
#include "exchange/FamilyCopy.h"
#include "exchange/LookupTable.h"
#include "filestore/FileFamily.h"
#include "platform/Blanks.h"
#include "platform/TextFile.h"
#include "settings/SettingsFile.h"

namespace kestrova {

QString EightCharName(const QString& name) {
    QByteArray spaceless;
    RemoveAllSpaces(ToBytes(name), spaceless);
    return TrimBlanks(FromBytes(spaceless).left(8));
}

Int16 FirstFreeNumber(const FileSystem& files, const QString& directory) {
    for (int n = 1;; ++n) {
        if (files.Find(directory + QString::number(n) + QStringLiteral(".*"), EntryKinds::Files).isEmpty())
            return Int16::From(n);
    }
}

namespace {

int ExportDrawing(Session& session, const QString& sourceDir, const QString& name, const QString& target,
                  const QString& newName) {
    if (session.files.IsFile(target + newName + QStringLiteral(".drw")) && !AskOverwrite(session, newName))
        return 0;
    DeleteFamily(session, target, newName, ExportDrawings, ExportedFrom(sourceDir));
    const bool withinMachine = WithinMachine(session.settings, target);
    CopyMembers(session, sourceDir, name, target, newName, [withinMachine](const QString& extension) {
        if (IsProgramMember(extension))
            return false;
        return withinMachine || (extension != u"usr" && extension != u"seq");
    });
    return 1;
}

int ExportProgram(Session& session, const QString& sourceDir, const QString& name, const QString& target,
                  const QString& newName, const QString& extension) {
    const QString targetFile = target + newName + u'.' + extension;
    if (session.files.IsFile(targetFile) && !AskOverwrite(session, newName))
        return 0;
    DeleteFamily(session, target, newName, ExportPrograms, ExportedFrom(sourceDir));
    // The family delete has taken a target with a program member's extension already.
    if (!IsProgramMember(extension.toLower()) && session.files.Exists(targetFile))
        session.files.Delete(targetFile);
    CopyIfPresent(session.files, sourceDir + name + QStringLiteral(".prg"), targetFile);
    return 1;
}

int ExportLookup(Session& session, const QString& sourceDir, const QString& name, const QString& target,
                 const QString& newName) {
    FileSystem& files = session.files;
    if (!files.IsFile(target + LookupTableName)) {
        TextWriter table(files, target + LookupTableName, TextWriter::Mode::Create);
        table.WriteLine(EndMarker);
        table.Close();
    }
    const QList<LookupLine> lines = ReadLookupTable(files, target);
    const int match = FindLookupEntry(lines, newName);
    int number = 0;
    if (match < 0) {
        number = FirstFreeNumber(files, target);
    } else {
        if (!AskOverwrite(session, newName))
            return 0;
        number = lines.at(match).number;
    }
    const QString stored = target + QString::number(number);
    for (const QString& old : files.Find(stored + QStringLiteral(".*"), EntryKinds::Files))
        files.Delete(target + old);
    const QString source = sourceDir + name;
    CopyIfPresent(files, source + QStringLiteral(".prg"), stored);
    CopyIfPresent(files, source + QStringLiteral(".inf"), stored + QStringLiteral(".inf"));
    CopyIfPresent(files, source + QStringLiteral(".rpt"), stored + QStringLiteral(".rpt"));
    if (WithinMachine(session.settings, target))
        CopyIfPresent(files, source + QStringLiteral(".stp"), stored + QStringLiteral(".stp"));
    RewriteLookupTable(files, session.settings.ProgramPath, target, lines, match,
                       LookupEntryLine(newName, number));
    return 1;
}

} // namespace

int ExportFile(Session& session, const QString& sourceDir, const QString& name, const QString& target,
               const QString& newName, int mode, bool lookup, bool eightChar, const QString& extension) {
    if (lookup)
        return ExportLookup(session, sourceDir, name, target, newName);
    const QString exported = eightChar ? EightCharName(newName) : newName;
    // Exported onto itself, the family would be deleted before it could be copied.
    if (exported.compare(name, Qt::CaseInsensitive) == 0 && SamePlace(session.files, sourceDir, target))
        return 0;
    switch (mode) {
    case ExportDrawings:
        return ExportDrawing(session, sourceDir, name, target, exported);
    case ExportPrograms:
        return ExportProgram(session, sourceDir, name, target, exported, extension);
    case ExportBoth:
        return CopyFamily(session, sourceDir, name, target, exported, ExportBoth);
    default:
        return 0;
    }
}

} // namespace kestrova
