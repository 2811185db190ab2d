#include "exchange/ImportFile.h"

#include "exchange/FamilyCopy.h"
#include "filestore/FileFamily.h"
#include "filestore/Names.h"

namespace kestrova {

ImportClass ClassOfImport(const QString& fileName) {
    static const QStringList singles{QStringLiteral("drg"), QStringLiteral("dxf"), QStringLiteral("bmp"),
                                     QStringLiteral("jpg"), QStringLiteral("nst"), QStringLiteral("ndf"),
                                     QStringLiteral("dfn"), QStringLiteral("mdf"), QStringLiteral("ajb"),
                                     QStringLiteral("usr"), QStringLiteral("seq")};
    const QString extension = GetExtension(fileName).toLower();
    if (extension == u"drw")
        return ImportClass::Drawing;
    if (extension == u"prg")
        return ImportClass::Program;
    // A program's own members come over as single files when imported on their own.
    return singles.contains(extension) || IsProgramMember(extension) ? ImportClass::SingleFile
                                                                     : ImportClass::ForeignProgram;
}

int ImportFile(Session& session, const QString& sourceDir, const QString& targetDir,
               const QString& fileName) {
    FileSystem& files = session.files;
    const QString base = StripExtension(fileName);
    // Imported onto itself, the old family would be deleted before it could be copied.
    if (SamePlace(files, sourceDir, targetDir))
        return 0;
    switch (ClassOfImport(fileName)) {
    case ImportClass::Drawing:
        if (files.IsFile(targetDir + base + QStringLiteral(".drw")) && !AskOverwrite(session, base))
            return 0;
        DeleteFamily(session, targetDir, base, 1, ImportedFrom(sourceDir));
        CopyMembers(session, sourceDir, base, targetDir, base,
                    [](const QString& extension) { return !IsProgramMember(extension); });
        return 1;
    case ImportClass::Program:
        if (files.IsFile(targetDir + base + QStringLiteral(".prg")) && !AskOverwrite(session, base))
            return 0;
        DeleteFamily(session, targetDir, base, 2, ImportedFrom(sourceDir));
        for (const QString& extension : ProgramMemberExtensions())
            CopyIfPresent(files, sourceDir + base + u'.' + extension, targetDir + base + u'.' + extension);
        return 1;
    case ImportClass::SingleFile:
        if (files.IsFile(targetDir + fileName)) {
            if (!AskOverwrite(session, fileName))
                return 0;
            files.Delete(targetDir + fileName);
        }
        files.Copy(sourceDir + fileName, targetDir + fileName);
        return 1;
    case ImportClass::ForeignProgram:
        if (files.IsFile(targetDir + fileName + QStringLiteral(".prg")) && !AskOverwrite(session, fileName))
            return 0;
        DeleteFamily(session, targetDir, fileName, 2, ImportedFrom(sourceDir));
        files.Copy(sourceDir + fileName, targetDir + fileName + QStringLiteral(".prg"));
        return 1;
    }
    return 0;
}

} // namespace kestrova
