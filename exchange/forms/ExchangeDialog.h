#pragma once

#include "Frontend/Session.h"
#include "filestore/ListModel.h"

#include <QDialog>
#include <functional>
#include <initializer_list>

class QListWidget;
class QPushButton;

namespace kestrova {

// What the external and the Rainer form share: errors of the file layer shown once at the edge
// of the control's event, and lists filled from the listings with their item data.
class ExchangeDialog : public QDialog {
    Q_OBJECT
protected:
    ExchangeDialog(Session& session, QWidget* parent);

    // Runs a step of an event; an error is shown once, naming the file, and the form goes on.
    // False when it failed.
    bool Guarded(const std::function<void()>& step);

    // The list holds the model's entries, each with its item data, and its selection.
    static void Fill(QListWidget* list, const ListModel& model);
    // The selected entries' texts in list order.
    [[nodiscard]] static QStringList SelectedTexts(const QListWidget* list);
    // The tab order, in the order given.
    static void TabOrder(std::initializer_list<QWidget*> widgets);
    [[nodiscard]] static QPushButton* Button(QWidget* parent, const QString& name, const QString& caption);

    Session& m_session;
};

} // namespace kestrova
