#include "platform/FileBatch.h"

namespace kestrova {

FileBatch::~FileBatch() {
    if (!m_open)
        return;
    try {
        m_files.SettleWrites();
    } catch (const SystemError&) {
        // The files stay listed: the next delete or rename forces them, or says why not.
    }
    m_files.EndBatch();
}

void FileBatch::Finish() {
    m_open = false;
    m_files.EndBatch();
    m_files.SettleWrites();
}

} // namespace kestrova
