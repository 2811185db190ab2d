#pragma once

#include "Frontend/Session.h"
#include "filestore/ListModel.h"
#include "platform/SerialLine.h"

#include <QDialog>
#include <functional>
#include <memory>

class QListWidget;
class QPushButton;

namespace kestrova {

// What the send and the receive form share: a serial line of their own, the load that may fail
// on the machine's settings, and a transfer during which Esc and closing the window mean abort.
class TransferDialog : public QDialog {
    Q_OBJECT
public:
    // False when the machine's settings could not be read (the operator has been told): the
    // form is then not to be shown.
    [[nodiscard]] bool Loaded() const { return m_loaded; }
    // A transfer is running.
    [[nodiscard]] bool Busy() const { return m_busy; }

    void reject() override;

protected:
    TransferDialog(Session& session, const SerialLineFactory& lines, QWidget* parent);
    ~TransferDialog() override;

    void closeEvent(QCloseEvent* event) override;
    // The abort button of the running transfer.
    virtual void Abort() = 0;

    // Runs the form's load; an error is shown once and leaves the form not loaded.
    void Load(const std::function<void()>& formLoad);
    // Runs a transfer: Esc and closing abort it meanwhile; a port that cannot open or a file that
    // cannot be read or written is shown once, naming it.
    void Transfer(const std::function<void()>& transfer);
    // Runs a step whose error is shown once, naming what failed; false when it failed.
    bool Guarded(const std::function<void()>& step);

    [[nodiscard]] static QPushButton* Button(QWidget* parent, const QString& name, const QString& caption);
    static void Fill(QListWidget* list, const ListModel& model);

    Session& m_session;
    std::unique_ptr<SerialLine> m_line;

private:
    bool m_loaded = false;
    bool m_busy = false;
};

} // namespace kestrova
