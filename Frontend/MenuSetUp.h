#pragma once

#include "Frontend/GlobalSettings.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

namespace kestrova {

// What the menu set-up, Lock menus or Unlock menus does to one entry. An entry it leaves as it
// is has no value there.
struct EntrySetting {
    QString entry; // control name; an item of a control array with its index ("ViewItem2")
    std::optional<bool> visible;
    std::optional<bool> enabled;

    friend bool operator==(const EntrySetting&, const EntrySetting&) = default;
};

// The nine top-level menus, in menu-bar order.
[[nodiscard]] const QStringList& TopLevelMenus();

// The menu set-up, carried out at start-up and after every package run: which entries the
// installed packages, the machine and its control call for.
[[nodiscard]] QList<EntrySetting> MenuSetUpTable(const GlobalSettings& g);

// Lock menus: the nine top-level menus disabled.
[[nodiscard]] QList<EntrySetting> LockedMenus();

// Unlock menus: the first eight enabled again; the manuals menu shown and enabled only when the
// manuals can be opened.
[[nodiscard]] QList<EntrySetting> UnlockedMenus(const GlobalSettings& g);

} // namespace kestrova
