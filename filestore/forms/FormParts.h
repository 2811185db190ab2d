#pragma once

#include "filestore/ListModel.h"
#include "platform/MessageService.h"

#include <QAbstractItemView>
#include <functional>

class QListWidget;
class QPushButton;
class QWidget;

namespace kestrova {

// The pieces the file store's forms share.

// A button that answers Enter only when the form makes it the default.
[[nodiscard]] QPushButton* MakeFormButton(QWidget* parent, const QString& name, const QString& caption);

// A list of the form, named for the form's code and tests, choosing as mode says.
[[nodiscard]] QListWidget* MakeFormList(QWidget* parent, const QString& name,
                                        QAbstractItemView::SelectionMode mode);

// Runs a step of a form's event handler; an error it meets (a file that cannot be copied, a
// directory that cannot be removed) is shown once, naming the file and the reason, and ends
// the step there instead of leaving through the event loop. False when that happened.
bool Guarded(MessageService& messages, const std::function<void()>& step);

// A list widget holding what a listing filled, its selection (or none) made current.
void FillListWidget(QListWidget* list, const ListModel& model);

} // namespace kestrova
