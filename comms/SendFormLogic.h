#pragma once

#include "Frontend/Session.h"
#include "comms/SendEngine.h"
#include "filestore/ListModel.h"

#include <QString>
#include <QStringList>

namespace kestrova {

// What the send form sends: programs, or (the Westinghouse Producer's) executives.
enum class SendKind { Program, Executive };

// The send form without its widgets: the machine whose settings and directories are used
// (`CommsMachineDir`), its data directory (`CommsDirectory`), the programs listed there, and
// Send, which hands each selected program in turn to the send engine.
//
// The machine's communication settings are read when the form loads and whenever another
// machine is chosen; a missing or short settings file raises its error, naming the file.
class SendFormLogic {
public:
    SendFormLogic(Session& session, SendEngine& engine, SendKind kind);

    // The current machine and directory; reads that machine's send settings.
    void Form_Load();

    // The machines to choose from, by description, in the order of the machine list; a choice
    // is offered only when there are several.
    [[nodiscard]] QStringList Machines() const;
    [[nodiscard]] bool MachineChoice() const { return Machines().size() >= 2; }
    // The index in Machines() of the machine used now.
    [[nodiscard]] int MachineIndex() const;
    // Another machine: its first data directory, its settings. A settings file that cannot be
    // read raises its error and leaves the machine as it was.
    void MachineChosen(int index);

    void FillDirectories(ListModel& list);
    void DirectoryChosen(const QString& name);
    void FillPrograms(ListModel& list);

    // The send settings file of the machine used now.
    [[nodiscard]] QString SettingsPath() const;
    // Whether this engine can send to the machine used now: executives and the Westinghouse
    // Producer need a control-character dialogue that this system does not carry out.
    [[nodiscard]] bool Supported() const;

    // Send with the names selected in the program list. Each program goes out in turn; an
    // abort or a lost line ends the run. Errors of the line pass to the caller.
    void SendOk_Click(const QStringList& names);

private:
    void LoadMachine(const QString& machineDir, const QString& description);

    Session& m_session;
    SendEngine& m_engine;
    SendKind m_kind;
    bool m_producer = false;
};

} // namespace kestrova
