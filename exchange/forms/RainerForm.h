#pragma once

#include "exchange/RainerFormSetup.h"
#include "exchange/forms/ExchangeDialog.h"

class QComboBox;
class QFrame;
class QLabel;
class QListWidget;
class QPushButton;

namespace kestrova {

// "Rainer - Export", "Rainer - Import" or "Rainer - Delete", by `RainerOperation`: the programs
// of a data directory or of the floppy's index, the directory they come from or go to, and OK.
// Everything but the widgets is RainerFloppy.
class RainerForm : public ExchangeDialog {
    Q_OBJECT
public:
    explicit RainerForm(Session& session, QWidget* parent = nullptr);

    void done(int result) override;

private:
    void FillDirectoryCombo();
    void FillProgramList(const QString& nameToSelect = {});
    void Search_Click();
    void DirectoryList_Change();
    void RainOk_Click();

    int m_operation = 0;
    RainerFormSetup m_setup;
    QListWidget* m_programList = nullptr;
    QComboBox* m_directoryList = nullptr;
    QFrame* m_directoryFrame = nullptr;
    QPushButton* m_rainOk = nullptr;
    QPushButton* m_search = nullptr;
};

} // namespace kestrova
