#include "comms/PortSetup.h"

namespace kestrova {

PortSetup PortSetupFor(TransferKind kind, int port, const QString& settings, int handshaking) {
    PortSetup s;
    s.CommPort = port;
    s.Settings = settings;
    switch (kind) {
    case TransferKind::SendWaiting:
        s.Handshaking = handshaking == 1 ? 0 : handshaking;
        s.DTREnable = s.RTSEnable = true;
        s.RThreshold = 1;
        break;
    case TransferKind::SendTransmitting:
        s.Handshaking = handshaking;
        s.DTREnable = s.RTSEnable = true;
        s.RThreshold = 128;
        s.NullDiscard = true;
        break;
    case TransferKind::DialogueSend:
        break;
    case TransferKind::GeneralReceive:
        s.Handshaking = handshaking;
        s.DTREnable = s.RTSEnable = true;
        s.NullDiscard = true;
        break;
    case TransferKind::DialogueReceive:
        s.InputLen = 1;
        break;
    case TransferKind::Background:
        s.Handshaking = handshaking;
        s.DTREnable = s.RTSEnable = true;
        s.RThreshold = 1;
        s.NullDiscard = true;
        break;
    }
    return s;
}

void PreparePort(SerialLine& line, const PortSetup& setup) {
    // The port number of an open port cannot change; every other value takes effect at once.
    if (!line.PortOpen())
        line.SetCommPort(setup.CommPort);
    line.SetSettings(setup.Settings);
    line.SetHandshaking(setup.Handshaking);
    line.SetDTREnable(setup.DTREnable);
    line.SetRTSEnable(setup.RTSEnable);
    line.SetInBufferCount(0);
    line.SetOutBufferCount(0);
    line.SetRThreshold(setup.RThreshold);
    line.SetSThreshold(setup.SThreshold);
    line.SetInputLen(setup.InputLen);
    line.SetNullDiscard(setup.NullDiscard);
    if (!line.PortOpen())
        line.SetPortOpen(true);
}

} // namespace kestrova
