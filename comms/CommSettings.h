#pragma once

#include "comms/CommParsers.h"
#include "platform/FileSystem.h"
#include "platform/Int16.h"

#include <QChar>
#include <QList>
#include <QString>

namespace kestrova {

// What both forms keep from the current machine's communication settings file.
struct MachineLineSettings {
    Int16 Port;
    QString Settings; // "9600,E,7,2"
    int Handshaking = 0;
    QString StartCharacter;
    QString Leader;
    QString LineEnd;
    QString Trailer;
    QString EndSequence;
    QList<QChar> SendFilter;
    QList<QChar> ReceiveFilter;
};

// What the send form keeps.
struct SendSettings : MachineLineSettings {
    bool Dtr = false;
    StartMode Start = StartMode::Manual;
    int PauseAfterStart = 0;
    int PauseAfterLeader = 0;
    int PauseAfterLine = 0;
    int PauseAfterTrailer = 0;
    // Line 16, milliseconds (0..65535): how long the end of a send waits for the control to take
    // what is still on its way; 0 leaves the engine's own limit.
    int TimeOut = 0;
};

// What the receive form keeps.
struct ReceiveSettings : MachineLineSettings {
    int ReceiveTimeOut = 0; // milliseconds, 0..65535
};

// What the background receive keeps from "Kestrova.cms".
struct BackgroundSettings {
    Int16 Port;           // 0 when the file is missing
    bool Enabled = false; // Port is 1 or more
    QString Settings;
    int Handshaking = 0;
    QString Trailer;
    QString EndSequence;
    QList<QChar> ReceiveFilter;
};

// The file name of the background receive's settings, in the system directory.
inline const QString BackgroundSettingsName = QStringLiteral("Kestrova.cms");

// Reads all twenty lines of a machine's settings file. Lines 1 to 16 must be there (a short
// file is "Input past end of file", a missing one "File not found"); each of the four pauses
// is 0 when the file ends before it.
[[nodiscard]] SendSettings ReadSendSettings(const FileSystem& files, const QString& path);

// Reads lines 1 to 16 of a machine's settings file; the time-out is clamped to 0..65535.
[[nodiscard]] ReceiveSettings ReadReceiveSettings(const FileSystem& files, const QString& path);

// Reads "Kestrova.cms" in the system directory. Never fails on a short file: a missing line
// takes the text of the last line that was read. A missing file switches the receive off.
[[nodiscard]] BackgroundSettings ReadBackgroundSettings(const FileSystem& files, const QString& systemPath);

} // namespace kestrova
