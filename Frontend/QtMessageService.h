#pragma once

#include "platform/MessageService.h"

class QWidget;

namespace kestrova {

// The message service on screen: a QMessageBox with the title, icon, buttons and default
// button the text asks for, the system beep, and the wait cursor for the hourglass.
class QtMessageService final : public MessageService {
public:
    explicit QtMessageService(QWidget* parent = nullptr) : m_parent(parent) {}
    void SetParent(QWidget* parent) { m_parent = parent; }

    Answer Show(const Message& message) override;
    void Beep() override;
    void SetBusy(bool busy) override;

private:
    QWidget* m_parent;
};

} // namespace kestrova
