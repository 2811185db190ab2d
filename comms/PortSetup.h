#pragma once

#include "platform/SerialLine.h"

#include <QString>

namespace kestrova {

// The kinds of transfer, each with its own set-up of the serial line.
enum class TransferKind {
    SendWaiting,      // a general send waiting for its start
    SendTransmitting, // a general send transmitting
    DialogueSend,     // the control-character dialogue sends
    GeneralReceive,   // the receive form
    DialogueReceive,  // the control-character dialogue receives
    Background,       // the background receive
};

// The property values a transfer sets before it opens the port.
struct PortSetup {
    int CommPort = 0;
    QString Settings;
    int Handshaking = 0;
    bool DTREnable = false;
    bool RTSEnable = false;
    int RThreshold = 0;
    int SThreshold = 0;
    int InputLen = 0;
    bool NullDiscard = false;

    friend bool operator==(const PortSetup&, const PortSetup&) = default;
};

// The set-up of a kind of transfer for a port, a settings string and the handshaking code read
// from line 7. A send waiting for its start holds back the XON/XOFF-only code as 0, so that an
// XON the control sends as its request reaches the program as data.
[[nodiscard]] PortSetup PortSetupFor(TransferKind kind, int port, const QString& settings, int handshaking);

// Sets the line's properties in the one order every transfer uses (CommPort, Settings,
// Handshaking, DTREnable, RTSEnable, both buffers emptied, RThreshold, SThreshold, InputLen,
// NullDiscard) and last opens the port if it is not open already. Errors of the line (a
// rejected framing, a missing port) pass to the caller.
void PreparePort(SerialLine& line, const PortSetup& setup);

} // namespace kestrova
