#include "platform/SpareLinks.h"

#include <QCoreApplication>
#include <QPointer>
#include <QTimer>

namespace kestrova {

namespace {

// How long a spare connection is kept.
constexpr int SpareMs = 2000;

QPointer<SpareLinks> g_spares;

} // namespace

SpareLinks& SpareLinks::Instance() {
    if (!g_spares)
        g_spares = new SpareLinks(QCoreApplication::instance());
    return *g_spares;
}

void SpareLinks::Keep(const QString& key, std::unique_ptr<NetLink> link) {
    if (NetLink* old = m_links.value(key))
        Drop(key, old);
    NetLink* kept = link.release();
    kept->disconnect();
    kept->setParent(this);
    m_links.insert(key, kept);
    connect(kept, &NetLink::Dropped, this, [this, key, kept] { Drop(key, kept); });
    QTimer::singleShot(SpareMs, kept, [this, key, kept] { Drop(key, kept); });
}

std::unique_ptr<NetLink> SpareLinks::Take(const QString& key) {
    NetLink* link = m_links.take(key);
    if (!link)
        return nullptr;
    // Its expiry, still to come, finds it gone and does nothing.
    link->disconnect(this);
    link->setParent(nullptr);
    return std::unique_ptr<NetLink>(link);
}

void SpareLinks::Drop(const QString& key, NetLink* link) {
    if (m_links.value(key) != link)
        return;
    m_links.remove(key);
    link->disconnect();
    link->deleteLater();
}

} // namespace kestrova
