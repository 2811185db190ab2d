#pragma once

#include "platform/NetLink.h"

#include <QHash>
#include <QObject>
#include <memory>

namespace kestrova {

// Connections to device servers that a line closed a moment ago, or that the device watch made,
// kept a short while for the next opening of the same port by any line: a device server serves
// one connection at a time, and one just closed may not yet be free on its side when the next
// transfer (with a line of its own) opens the port at once.
class SpareLinks final : public QObject {
    Q_OBJECT
public:
    // The program's one store, owned by the application object.
    [[nodiscard]] static SpareLinks& Instance();

    void Keep(const QString& key, std::unique_ptr<NetLink> link);
    // The connection kept for key, if any is still there.
    [[nodiscard]] std::unique_ptr<NetLink> Take(const QString& key);
    [[nodiscard]] bool Has(const QString& key) const { return m_links.contains(key); }

private:
    using QObject::QObject;
    void Drop(const QString& key, NetLink* link);

    QHash<QString, NetLink*> m_links; // owned: children of this store
};

} // namespace kestrova
