#include "filestore/FileFamily.h"

#include "filestore/HistoryOperations.h"
#include "filestore/Names.h"
#include "filestore/ProgramHistory.h"
#include "platform/Blanks.h"

#include <QList>

namespace kestrova {

const QStringList& ProgramMemberExtensions() {
    static const QStringList members{QStringLiteral("prg"), QStringLiteral("inf"), QStringLiteral("rpt"),
                                     QStringLiteral("stp")};
    return members;
}

bool IsProgramMember(const QString& extension) {
    return ProgramMemberExtensions().contains(extension);
}

namespace {

struct Transfer {
    QString from;
    QString to;
};

// What follows the base name, dot included ("" for a file without extension).
QString Suffix(const QString& member) {
    const qsizetype dot = member.lastIndexOf(u'.');
    return dot < 0 ? QString() : member.mid(dot);
}

// Whether the destination family holds the file the kind asks about: its drawing (kind 1), its
// program (kind 2), either (kind 3).
bool DestinationExists(const QStringList& members, int kind) {
    for (const QString& member : members) {
        const QString extension = GetExtension(member).toLower();
        if ((kind != 2 && extension == QLatin1String("drw")) ||
            (kind != 1 && extension == QLatin1String("prg")))
            return true;
    }
    return false;
}

// Deletes the members of the kind from a family listed beforehand; a program or drawing among
// them is kept in the history first, under the operation that deletes it.
void DeleteMembers(Session& session, const QString& directory, const QStringList& members, int kind,
                   const QString& operation) {
    for (const QString& member : members) {
        const QString extension = GetExtension(member);
        bool deleted = false;
        if (kind == 2) {
            deleted = IsProgramMember(extension.toLower());
        } else if (kind == 1 || kind == 3) {
            // A nest file survives in any letter case; the program members of kind 1 only as spelled.
            const bool nest = extension.compare(QLatin1String("nst"), Qt::CaseInsensitive) == 0;
            deleted = !nest && !(kind == 1 && (extension.isEmpty() || IsProgramMember(extension)));
        }
        if (!deleted)
            continue;
        KeepPreviousVersion(session, directory + member, operation);
        session.files.Delete(directory + member);
    }
}

// The files a copy of the family takes, by the rules of its kind.
QList<Transfer> Plan(Session& session, const QString& sourceDir, const QString& sourceName,
                     const QString& destinationDir, const QString& destinationName, int kind) {
    const FileSystem& files = session.files;
    const bool within = WithinMachine(session.settings, destinationDir);
    QList<Transfer> plan;
    for (const QString& member : FamilyMembers(files, sourceDir, sourceName)) {
        const QString extension = GetExtension(member);
        if (kind == 2) {
            // Exactly the program members, each under its extension in lower case.
            const QString lower = extension.toLower();
            if (IsProgramMember(lower) && (lower != QLatin1String("stp") || within))
                plan.append({sourceDir + member, destinationDir + destinationName + u'.' + lower});
            continue;
        }
        bool boundToMachine = false;
        if (kind == 1) {
            // As spelled: "PRG" is no program member here.
            boundToMachine = IsProgramMember(extension) || extension.isEmpty() ||
                             extension == QLatin1String("usr") || extension == QLatin1String("seq");
        } else {
            const QString lower = extension.toLower();
            boundToMachine = lower == QLatin1String("usr") || lower == QLatin1String("seq") ||
                             lower == QLatin1String("stp");
        }
        if (!boundToMachine || within)
            plan.append({sourceDir + member, destinationDir + destinationName + Suffix(member)});
    }
    return plan;
}

// Copies every file of the plan; when one copy fails, the copies already made are removed again
// (their sources are untouched) and the error goes on to the caller.
void CopyAll(FileSystem& files, const QList<Transfer>& plan) {
    qsizetype done = 0;
    try {
        for (; done < plan.size(); ++done)
            files.Copy(plan.at(done).from, plan.at(done).to);
    } catch (const SystemError&) {
        for (qsizetype i = 0; i < done; ++i) {
            try {
                files.Delete(plan.at(i).to);
            } catch (const SystemError&) {
                // A drive gone for the copy is gone for the clean-up too; the source is whole.
            }
        }
        throw;
    }
}

// The overwrite question and the clearing of the old destination family. False when the
// family is not to be copied.
bool PrepareDestination(Session& session, const QString& sourceDir, const QString& sourceName,
                        const QString& destinationDir, const QString& destinationName, int kind,
                        const QString& operation) {
    GlobalSettings& g = session.settings;
    if (kind < 1 || kind > 3)
        return false;
    if (SamePlace(session.files, sourceDir, destinationDir) &&
        sourceName.compare(destinationName, Qt::CaseInsensitive) == 0) {
        g.LastAnswer = Int16::From(int(Answer::No));
        return false;
    }
    const QStringList old = FamilyMembers(session.files, destinationDir, destinationName);
    Answer answer = Answer::Yes;
    if (DestinationExists(old, kind))
        answer = session.messages.Ask(OverwriteQuestion(destinationName));
    g.LastAnswer = Int16::From(int(answer));
    if (answer != Answer::Yes)
        return false;
    DeleteMembers(session, destinationDir, old, kind, operation);
    return true;
}

} // namespace

QStringList FamilyMembers(const FileSystem& files, const QString& directory, const QString& name) {
    QStringList members;
    for (const QString& file : files.Find(directory + name + QStringLiteral(".*"), EntryKinds::Files)) {
        const qsizetype dot = file.lastIndexOf(u'.');
        const QString base = dot < 0 ? file : file.left(dot);
        if (base.compare(name, Qt::CaseInsensitive) == 0)
            members << file;
    }
    return members;
}

bool SamePlace(const FileSystem& files, const QString& a, const QString& b) {
    const QString hostA = files.HostPath(a);
    if (!hostA.isEmpty())
        return hostA == files.HostPath(b);
    return files.FullPath(a).compare(files.FullPath(b), Qt::CaseInsensitive) == 0;
}

bool WithinMachine(const GlobalSettings& g, const QString& destinationDir) {
    return destinationDir.toUpper().contains(g.MachineDir.toUpper());
}

int CopyFamily(Session& session, const QString& sourceDir, const QString& sourceName,
               const QString& destinationDir, const QString& destinationName, int kind) {
    const QString from = TrimBlanks(sourceName);
    const QString to = TrimBlanks(destinationName);
    if (!PrepareDestination(session, sourceDir, from, destinationDir, to, kind, CopiedOverFrom(sourceDir)))
        return 0;
    CopyAll(session.files, Plan(session, sourceDir, from, destinationDir, to, kind));
    return 1;
}

int MoveFamily(Session& session, const QString& sourceDir, const QString& sourceName,
               const QString& destinationDir, const QString& destinationName, int kind) {
    const QString from = TrimBlanks(sourceName);
    const QString to = TrimBlanks(destinationName);
    const QString operation = SamePlace(session.files, sourceDir, destinationDir) ? RenamedOverFrom(from)
                                                                                  : MovedOverFrom(sourceDir);
    if (!PrepareDestination(session, sourceDir, from, destinationDir, to, kind, operation))
        return 0;
    const QList<Transfer> plan = Plan(session, sourceDir, from, destinationDir, to, kind);
    CopyAll(session.files, plan);
    for (const Transfer& t : plan)
        session.files.Delete(t.from);
    return 1;
}

void DeleteFamily(Session& session, const QString& directory, const QString& name, int kind,
                  const QString& operation) {
    DeleteMembers(session, directory, FamilyMembers(session.files, directory, TrimBlanks(name)), kind,
                  operation);
}

} // namespace kestrova
