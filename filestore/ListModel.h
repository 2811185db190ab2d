#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace kestrova {

// What a list box holds: its entries, each with an item number, and the selected index (-1 none).
// The listings fill it; the forms copy it into their list widgets, and tests read it directly.
struct ListModel {
    QStringList entries;
    QList<int> itemData;
    int selected = -1;

    void Clear() {
        entries.clear();
        itemData.clear();
        selected = -1;
    }
    int Add(const QString& entry, int data = 0) {
        entries << entry;
        itemData << data;
        return int(entries.size()) - 1;
    }
    [[nodiscard]] int Count() const { return int(entries.size()); }
    [[nodiscard]] QString SelectedText() const { return selected >= 0 ? entries.value(selected) : QString(); }
};

} // namespace kestrova
