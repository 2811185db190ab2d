// The background receive on the main window: RcvComms and the core that files what it brings,
// with the receive list, its frame and its button mirroring the core.
#include "Frontend/FrontEnd.h"
#include "Frontend/StatusBox.h"
#include "comms/BackgroundReceive.h"
#include "platform/MappedSerialLine.h"

namespace kestrova {

void FrontEnd::SetUpBackgroundReceive(std::unique_ptr<SerialLine> line) {
    if (!line)
        line = std::make_unique<MappedSerialLine>(m_session.files.Devices());
    line->setObjectName(QStringLiteral("RcvComms"));
    m_receive = std::make_unique<BackgroundReceive>(m_session, std::move(line));

    connect(m_receive.get(), &BackgroundReceive::ReceiveListChanged, this, &FrontEnd::MirrorReceiveList);
    // The status bar shows at all times whether the background line listens, waits for its
    // device, or is off.
    m_statusBar->ShowLineState(m_receive->LineStateText());
    connect(m_receive.get(), &BackgroundReceive::LineStateChanged, this,
            [this] { m_statusBar->ShowLineState(m_receive->LineStateText()); });
    connect(this, &FrontEnd::ReceiveButtonClicked, this,
            [this] { Handle([this] { m_receive->ReceiveButton_Click(); }); });
    connect(this, &FrontEnd::ReceiveListFocused, this, [this] {
        // The window's own hand-over looks at the button's visibility itself.
        (void)m_receive->ReceiveList_GotFocus();
        LeaveReceiveList();
    });

    // Another machine has its own programs to receive; closing ends the receive first of all,
    // discarding a program cut off in the middle.
    AddMachineChangedHook([this] { StartBackgroundReceive(); });
    AddCloseHook([this] { m_receive->Stop(); });
}

void FrontEnd::StartBackgroundReceive() {
    // After a machine change, a port that is missing or in use is told once, naming it, and
    // watched for; the program goes on.
    Handle([this] { m_receive->Start(); });
}

void FrontEnd::MirrorReceiveList() {
    SetReceivedPrograms(m_receive->ReceiveList().entries);
    ShowReceiveFrame(m_receive->ReceiveFrameVisible());
}

} // namespace kestrova
