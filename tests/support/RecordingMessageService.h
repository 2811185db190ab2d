#pragma once

#include "platform/MessageService.h"

#include <QList>
#include <QStringList>
#include <deque>
#include <functional>

namespace kestrova::testing {

// The message service of the tests: keeps every message, beep and hourglass change in order, and
// answers questions from a script. An unscripted question gets its default button.
class RecordingMessageService final : public MessageService {
public:
    struct Shown {
        Message message;
        Answer answer;
    };

    Answer Show(const Message& message) override;
    void Beep() override;
    void SetBusy(bool busy) override;

    // The answers to give, in order.
    void Script(std::initializer_list<Answer> answers);
    // Runs as each message is shown, before it is answered: what happens while the operator
    // reads it (a disk taken out, put back). Stays until replaced; an empty one ends it.
    void WhileShowing(std::function<void(const Message&)> hook) { m_whileShowing = std::move(hook); }

    [[nodiscard]] QStringList Texts() const;
    // Messages and beeps in order: a beep is "<beep>".
    [[nodiscard]] const QStringList& Log() const { return m_log; }
    [[nodiscard]] const QList<Shown>& Messages() const { return m_shown; }
    [[nodiscard]] int Beeps() const { return m_beeps; }
    [[nodiscard]] int BusyDepth() const { return m_busyDepth; }
    [[nodiscard]] int BusyCount() const { return m_busyCount; }
    void Clear();

private:
    std::deque<Answer> m_script;
    std::function<void(const Message&)> m_whileShowing;
    QList<Shown> m_shown;
    QStringList m_log;
    int m_beeps = 0;
    int m_busyDepth = 0;
    int m_busyCount = 0;
};

} // namespace kestrova::testing
