#include "exchange/FamilyCopy.h"

#include "filestore/FileFamily.h"
#include "filestore/Names.h"

namespace kestrova {

bool AskOverwrite(Session& session, const QString& name) {
    const Answer answer = session.messages.Ask(OverwriteQuestion(name));
    session.settings.LastAnswer = Int16::From(int(answer));
    return answer == Answer::Yes;
}

void CopyMembers(Session& session, const QString& sourceDir, const QString& name,
                 const QString& destinationDir, const QString& newName,
                 const std::function<bool(const QString& extension)>& take) {
    for (const QString& member : FamilyMembers(session.files, sourceDir, name)) {
        const QString extension = GetExtension(member);
        if (extension.isEmpty() || !take(extension.toLower()))
            continue;
        session.files.Copy(sourceDir + member, destinationDir + newName + u'.' + extension);
    }
}

bool CopyIfPresent(FileSystem& files, const QString& source, const QString& destination) {
    if (!files.IsFile(source))
        return false;
    files.Copy(source, destination);
    return true;
}

} // namespace kestrova
