#include "comms/UnfiledProgram.h"

#include "filestore/Names.h"
#include "platform/Int16.h"

namespace kestrova {

QString FreeUnfiledName(const FileSystem& files, const QString& directory) {
    Int16 n = 1;
    auto name = [&] {
        return directory + QStringLiteral("Unfiled ") + NumberText(n) + QStringLiteral(".prg");
    };
    while (files.Exists(name()))
        ++n;
    return name();
}

QString KeepUnfiled(FileSystem& files, const QString& directory, const QString& from, QString& failure) {
    try {
        const QString kept = FreeUnfiledName(files, directory);
        try {
            files.Rename(from, kept);
        } catch (const SystemError& renaming) {
            try {
                files.Copy(from, kept);
            } catch (const SystemError&) {
                if (files.IsFile(kept))
                    files.Delete(kept);
                throw renaming;
            }
            // Kept whole: the original may go. Where it cannot, it is only a second copy.
            try {
                files.Delete(from);
            } catch (const SystemError&) {
            }
        }
        return kept;
    } catch (const SystemError& e) {
        failure = e.text();
        return from;
    }
}

QString KeptUnfiledText(const QString& reason, const QString& kept, const QString& failure) {
    QString text =
        reason + QStringLiteral("\nThe Received Program Is Kept In \"") + kept + QStringLiteral("\" !");
    if (!failure.isEmpty())
        text += u'\n' + failure;
    return text;
}

} // namespace kestrova
