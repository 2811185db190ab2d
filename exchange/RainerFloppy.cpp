#include "exchange/RainerFloppy.h"

#include "exchange/CountText.h"
#include "exchange/FamilyCopy.h"
#include "exchange/RainerIndex.h"
#include "filestore/DriveCheck.h"
#include "filestore/FileFamily.h"
#include "filestore/KeyFilter.h"
#include "filestore/Names.h"
#include "platform/Blanks.h"
#include "platform/FileBatch.h"

#include <functional>

namespace kestrova {

namespace {

bool FloppyReady(const FileSystem& files) {
    return DriveExists(files, rainer::Drive);
}

// The check every form operation makes after its question. True when the work may go on.
bool FormDriveCheck(Session& session, Answer answer) {
    return answer == Answer::Yes &&
           DriveReadyAfterRetry(session, rainer::Drive, QStringLiteral("Floppy Disc Not Ready !"));
}

// The questions of Import and Delete: Yes is their default.
Answer AskYesDefault(Session& session, const QString& text) {
    const Answer answer = session.messages.Show({text, Buttons::YesNo, Icon::Exclamation, 1});
    session.settings.LastAnswer = Int16::From(int(answer));
    return answer;
}

// The question of Import and Delete for the chosen entries; No when there are none.
Answer ConfirmChosen(Session& session, const QList<RainerChoice>& chosen, const QString& verb) {
    if (chosen.isEmpty()) {
        session.messages.Refuse(QStringLiteral("No Programs Selected"));
        return Answer::No;
    }
    if (chosen.size() == 1)
        return AskYesDefault(session, verb + QStringLiteral(" Program \"") + TrimBlanks(chosen.first().text) +
                                          QStringLiteral("\" From Floppy Disk ?"));
    return AskYesDefault(session, verb + u' ' + NumberText(chosen.size()) +
                                      QStringLiteral(" Programs From Floppy Disk ?"));
}

QString ReportText(int count, const QString& done) {
    return CountText(count, QStringLiteral("Program Has"), QStringLiteral("Programs Have"),
                     QStringLiteral("Been ") + done);
}

int Variant(const Session& session) {
    return session.settings.RainerType;
}

} // namespace

void FillRainerList(Session& session, ListModel& list) {
    list.Clear();
    if (!FloppyReady(session.files))
        return;
    const BusyCursor busy(session.messages);
    for (const RainerSlot& slot : ReadRainerIndex(session.files, Variant(session))) {
        if (!slot.free && session.files.IsFile(SlotFileName(slot.slot)))
            list.Add(slot.name, slot.slot);
    }
    if (list.Count() > 0)
        list.selected = 0;
}

int ImportRainerProgram(Session& session, const QString& source, const QString& directory,
                        const QString& name) {
    const QString target = directory + name + QStringLiteral(".prg");
    if (session.files.IsFile(target) && !AskOverwrite(session, name))
        return 0;
    DeleteFamily(session, directory, name, 2, ImportedFrom(source.left(source.lastIndexOf(u'\\') + 1)));
    CopyIfPresent(session.files, source, target);
    return 1;
}

RainOutcome RainerExport(Session& session, const QStringList& programs) {
    MessageService& messages = session.messages;
    FileSystem& files = session.files;
    if (programs.isEmpty()) {
        messages.Refuse(QStringLiteral("No Programs Selected !"));
        return RainOutcome::StayOnList;
    }
    const Answer answer = messages.Ask(
        programs.size() == 1
            ? QStringLiteral("Export \"") + TrimBlanks(programs.first()) + QStringLiteral("\" ?")
            : QStringLiteral("Export ") + NumberText(programs.size()) + QStringLiteral(" Programs ?"));
    session.settings.LastAnswer = Int16::From(int(answer));
    if (!FormDriveCheck(session, answer))
        return RainOutcome::Close;
    Int16 count = 0;
    {
        const BusyCursor busy(messages);
        // A fresh index is on the disk before the first program goes with it.
        if (!files.IsFile(rainer::IndexPath))
            WriteFreshIndex(files);
        FileBatch batch(files);
        // Read once: from here on only this export changes it, and its list follows each change.
        QList<RainerSlot> slots = ReadRainerIndex(files, Variant(session));
        for (const QString& entry : programs) {
            const QString name = TrimBlanks(entry);
            // The index holds 50 characters of a name: a longer one could not be found again.
            if (name.size() > rainer::NameLength) {
                messages.Refuse(InvalidFileName);
                continue;
            }
            int slot = 0;
            bool named = false;
            for (const RainerSlot& s : slots) {
                if (!s.free && s.name.compare(name, Qt::CaseInsensitive) == 0) {
                    slot = s.slot;
                    named = true;
                    break;
                }
            }
            if (!named) {
                for (const RainerSlot& s : slots) {
                    if (s.free) {
                        slot = s.slot;
                        break;
                    }
                }
            }
            if (slot == 0) {
                messages.Refuse(QStringLiteral("Floppy Disk Index Is Full !"));
                continue;
            }
            const QString programFile = SlotFileName(slot);
            const bool onFloppy = files.IsFile(programFile);
            if (named && onFloppy) {
                const Answer overwrite =
                    messages.Show({QStringLiteral("Program \"") + name +
                                       QStringLiteral("\"\n\nAlready Exists!  Overwrite it ?"),
                                   Buttons::YesNo, Icon::Exclamation, 2, QStringLiteral("Kestrcom")});
                session.settings.LastAnswer = Int16::From(int(overwrite));
                if (overwrite != Answer::Yes)
                    continue;
            }
            if (onFloppy)
                files.Delete(programFile);
            files.Copy(session.settings.CurrentPath + name + QStringLiteral(".prg"), programFile);
            WriteUsedSlot(files, Variant(session), slot, name);
            // The slot as a fresh read of its record would give it.
            for (RainerSlot& s : slots) {
                if (s.slot == slot)
                    s.name = ParseRainerIndex(UsedEntry(Variant(session), name), 1).value(0).name;
                s.free = s.free && s.slot != slot;
            }
            ++count;
        }
        batch.Finish();
    }
    messages.Report(ReportText(count, QStringLiteral("Exported")));
    return RainOutcome::Close;
}

namespace {

// The frame of Import and Delete: the question, the drive check, the work on each chosen entry
// (its result counted) and the count report. The form closes afterwards in every case.
RainOutcome ForEachChosen(Session& session, const QList<RainerChoice>& chosen, const QString& verb,
                          const QString& done, const std::function<int(const RainerChoice&)>& each) {
    const Answer answer = ConfirmChosen(session, chosen, verb);
    if (!FormDriveCheck(session, answer))
        return RainOutcome::Close;
    Int16 count = 0;
    {
        const BusyCursor busy(session.messages);
        FileBatch batch(session.files);
        for (const RainerChoice& choice : chosen)
            count += Int16::From(each(choice));
        batch.Finish();
    }
    session.messages.Report(ReportText(count, done));
    return RainOutcome::Close;
}

} // namespace

RainOutcome RainerImport(Session& session, const QList<RainerChoice>& chosen) {
    return ForEachChosen(session, chosen, QStringLiteral("Import"), QStringLiteral("Imported"),
                         [&session](const RainerChoice& choice) {
                             const QString name = TrimBlanks(choice.text.left(rainer::NameReadLength));
                             // A name from the floppy never becomes a path of its own.
                             if (!AcceptableOutsideName(name)) {
                                 session.messages.Refuse(InvalidFileName);
                                 return 0;
                             }
                             return ImportRainerProgram(session, SlotFileName(choice.slot),
                                                        session.settings.CurrentPath, name);
                         });
}

RainOutcome RainerDelete(Session& session, const QList<RainerChoice>& chosen) {
    return ForEachChosen(session, chosen, QStringLiteral("Delete"), QStringLiteral("Deleted"),
                         [&session](const RainerChoice& choice) {
                             const QString programFile = SlotFileName(choice.slot);
                             if (session.files.IsFile(programFile))
                                 session.files.Delete(programFile);
                             WriteFreeSlot(session.files, Variant(session), choice.slot);
                             return 1;
                         });
}

bool FloppyReadyForMenu(Session& session) {
    if (DriveReadyAfterRetry(session, rainer::Drive,
                             QStringLiteral("Floppy Disk Not Ready !\n\nInsert Floppy Disk Now !")))
        return true;
    session.messages.Beep();
    return false;
}

void FormatRainerFloppy(Session& session) {
    FileSystem& files = session.files;
    if (!FloppyReadyForMenu(session))
        return;
    const QString programs = QStringLiteral("A:\\*.PRG");
    Answer answer = Answer::Yes;
    if (!files.Find(programs, EntryKinds::Files).isEmpty()) {
        answer = session.messages.Ask(QStringLiteral(
            "Formating Will Delete All Programs On Floppy Disk !\n\nDo You Want to Continue ?"));
        session.settings.LastAnswer = Int16::From(int(answer));
    }
    if (answer != Answer::Yes || !FloppyReady(files))
        return;
    const BusyCursor busy(session.messages);
    // The index is replaced rather than deleted, so that a format that fails half way leaves an
    // index behind: the old one, whose entries without their files are never listed, or the
    // fresh one.
    const QString index = rainer::IndexPath.mid(3);
    for (const QString& name : files.Find(programs, EntryKinds::Files)) {
        if (name.compare(index, Qt::CaseInsensitive) != 0)
            files.Delete(QStringLiteral("A:\\") + name);
    }
    WriteFreshIndex(files);
}

} // namespace kestrova
