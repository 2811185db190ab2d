#include "RecordingMessageService.h"

namespace kestrova::testing {

namespace {

Answer DefaultAnswer(const Message& m) {
    const int button = m.defaultButton;
    switch (m.buttons) {
    case Buttons::Ok:
        return Answer::Ok;
    case Buttons::OkCancel:
        return button == 2 ? Answer::Cancel : Answer::Ok;
    case Buttons::AbortRetryIgnore:
        return button == 1 ? Answer::Abort : button == 2 ? Answer::Retry : Answer::Ignore;
    case Buttons::YesNoCancel:
        return button == 1 ? Answer::Yes : button == 2 ? Answer::No : Answer::Cancel;
    case Buttons::YesNo:
        return button == 2 ? Answer::No : Answer::Yes;
    case Buttons::RetryCancel:
        return button == 2 ? Answer::Cancel : Answer::Retry;
    }
    return Answer::Ok;
}

} // namespace

Answer RecordingMessageService::Show(const Message& message) {
    if (m_whileShowing)
        m_whileShowing(message);
    Answer answer = DefaultAnswer(message);
    if (message.buttons != Buttons::Ok && !m_script.empty()) {
        answer = m_script.front();
        m_script.pop_front();
    }
    m_shown << Shown{message, answer};
    m_log << message.text;
    return answer;
}

void RecordingMessageService::Beep() {
    ++m_beeps;
    m_log << QStringLiteral("<beep>");
}

void RecordingMessageService::SetBusy(bool busy) {
    if (busy) {
        ++m_busyDepth;
        ++m_busyCount;
    } else {
        --m_busyDepth;
    }
}

void RecordingMessageService::Script(std::initializer_list<Answer> answers) {
    for (Answer a : answers)
        m_script.push_back(a);
}

QStringList RecordingMessageService::Texts() const {
    QStringList texts;
    for (const Shown& s : m_shown)
        texts << s.message.text;
    return texts;
}

void RecordingMessageService::Clear() {
    m_shown.clear();
    m_log.clear();
    m_beeps = 0;
    m_busyCount = 0;
}

} // namespace kestrova::testing
