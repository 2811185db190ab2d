#pragma once

#include "filestore/ListModel.h"

class QListWidget;
class QPushButton;
class QWidget;

namespace kestrova {

// The pieces the file store's forms share.

// A button that answers Enter only when the form makes it the default.
[[nodiscard]] QPushButton* MakeFormButton(QWidget* parent, const QString& name, const QString& caption);

// A list widget holding what a listing filled, its selection (or none) made current.
void FillListWidget(QListWidget* list, const ListModel& model);

} // namespace kestrova
