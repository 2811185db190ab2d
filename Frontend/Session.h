#pragma once

#include "Frontend/GlobalSettings.h"
#include "platform/FileSystem.h"
#include "platform/MessageService.h"

namespace kestrova {

// What every routine of the front end works with: the environment record, the host file layer
// of this installation and the message service. Start-up owns all three.
struct Session {
    GlobalSettings& settings;
    FileSystem& files;
    MessageService& messages;
};

} // namespace kestrova
