#pragma once

namespace kestrova {

// Whether a process of that id runs on this host (the DNC service named in its state file).
[[nodiscard]] bool ProcessAlive(long long pid);

} // namespace kestrova
