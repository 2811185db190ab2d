#include "exchange/forms/ExchangeDialog.h"

#include <QListWidget>
#include <QPushButton>

namespace kestrova {

ExchangeDialog::ExchangeDialog(Session& session, QWidget* parent) : QDialog(parent), m_session(session) {
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
}

bool ExchangeDialog::Guarded(const std::function<void()>& step) {
    try {
        step();
        return true;
    } catch (const SystemError& error) {
        m_session.messages.ShowError(error.text());
    } catch (const std::exception& error) {
        m_session.messages.ShowError(QString::fromLocal8Bit(error.what()));
    }
    return false;
}

void ExchangeDialog::Fill(QListWidget* list, const ListModel& model) {
    const QSignalBlocker quiet(list);
    list->clear();
    for (int i = 0; i < model.Count(); ++i) {
        auto* item = new QListWidgetItem(model.entries.at(i), list);
        item->setData(Qt::UserRole, model.itemData.value(i));
    }
    list->setCurrentRow(model.selected);
}

QStringList ExchangeDialog::SelectedTexts(const QListWidget* list) {
    QStringList texts;
    for (int i = 0; i < list->count(); ++i) {
        if (list->item(i)->isSelected())
            texts << list->item(i)->text();
    }
    return texts;
}

void ExchangeDialog::TabOrder(std::initializer_list<QWidget*> widgets) {
    QWidget* previous = nullptr;
    for (QWidget* widget : widgets) {
        if (previous)
            setTabOrder(previous, widget);
        previous = widget;
    }
}

QPushButton* ExchangeDialog::Button(QWidget* parent, const QString& name, const QString& caption) {
    auto* button = new QPushButton(caption, parent);
    button->setObjectName(name);
    button->setAutoDefault(false);
    return button;
}

} // namespace kestrova
