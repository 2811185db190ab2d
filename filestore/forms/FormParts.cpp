#include "filestore/forms/FormParts.h"

#include "platform/Errors.h"

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

QListWidget* MakeFormList(QWidget* parent, const QString& name, QAbstractItemView::SelectionMode mode) {
    auto* list = new QListWidget(parent);
    list->setObjectName(name);
    list->setSelectionMode(mode);
    return list;
}

bool Guarded(MessageService& messages, const std::function<void()>& step) {
    try {
        step();
        return true;
    } catch (const SystemError& error) {
        messages.ShowError(error.text());
    } catch (const std::exception& error) {
        messages.ShowError(QString::fromLocal8Bit(error.what()));
    }
    return false;
}

void FillListWidget(QListWidget* list, const ListModel& model) {
    const QSignalBlocker quiet(list);
    list->clear();
    list->addItems(model.entries);
    list->setCurrentRow(model.selected);
}

} // namespace kestrova
