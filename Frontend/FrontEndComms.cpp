// The Communications menu: the send and receive forms, each over a serial line of its own.
#include "Frontend/FrontEnd.h"
#include "comms/forms/DncMonitorForm.h"
#include "comms/forms/ReceiveForm.h"
#include "comms/forms/SendForm.h"
#include "comms/forms/TransferLogForm.h"
#include "platform/MappedSerialLine.h"

namespace kestrova {

SerialLineFactory FrontEnd::FormLines() const {
    if (m_formLines)
        return m_formLines;
    const DeviceMap& devices = m_session.files.Devices();
    return [&devices] { return std::make_unique<MappedSerialLine>(devices); };
}

void FrontEnd::OpenSendForm(SendKind kind) {
    InFrame([&] {
        SendForm form(m_session, FormLines(), this, kind);
        if (form.Loaded())
            form.exec();
    });
    ShowStatus();
}

void FrontEnd::OpenReceiveForm(int operation) {
    m_session.settings.ReceiveOperation = Int16::From(operation);
    InFrame([&] {
        ReceiveForm form(m_session, FormLines(), this);
        if (form.Loaded())
            form.exec();
    });
    ShowStatus();
}

void FrontEnd::OpenTransferLog() {
    InFrame([&] {
        TransferLogForm form(m_session, this);
        form.exec();
    });
}

void FrontEnd::OpenDncMonitor() {
    InFrame([&] {
        DncMonitorForm form(m_session, this);
        form.exec();
    });
}

} // namespace kestrova
