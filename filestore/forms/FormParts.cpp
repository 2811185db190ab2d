#include "filestore/forms/FormParts.h"

#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>

namespace kestrova {

QPushButton* MakeFormButton(QWidget* parent, const QString& name, const QString& caption) {
    auto* button = new QPushButton(caption, parent);
    button->setObjectName(name);
    button->setAutoDefault(false);
    return button;
}

void FillListWidget(QListWidget* list, const ListModel& model) {
    const QSignalBlocker quiet(list);
    list->clear();
    list->addItems(model.entries);
    list->setCurrentRow(model.selected);
}

} // namespace kestrova
