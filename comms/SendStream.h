#pragma once

#include "comms/CommSettings.h"

#include <QString>
#include <bitset>

namespace kestrova {

struct SendMachine;

// What goes on the line in front of a program: the header a terminal or Intermotion control
// reads (machine, directory, program), or else the settings' leader.
[[nodiscard]] QString SendHeaderOrLeader(const SendSettings& settings, const SendMachine& machine,
                                         const QString& directory, const QString& program);

// The send filter's characters, by byte.
[[nodiscard]] std::bitset<256> SendFilterOf(const SendSettings& settings);

// One byte of a program's text as it goes on the line: CR gives the settings' line end, LF
// nothing (the CR before it ended the line), a filtered character nothing, any other itself.
[[nodiscard]] QString SendFormOf(quint8 byte, const QString& lineEnd, const std::bitset<256>& filtered);

} // namespace kestrova
