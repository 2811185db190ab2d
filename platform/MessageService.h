#pragma once

#include <QString>

namespace kestrova {

// Answers as the system keeps them in `LastAnswer`.
enum class Answer { Ok = 1, Cancel = 2, Abort = 3, Retry = 4, Ignore = 5, Yes = 6, No = 7 };

enum class Buttons { Ok, OkCancel, AbortRetryIgnore, YesNoCancel, YesNo, RetryCancel };
enum class Icon { None, Critical, Question, Exclamation, Information };

struct Message {
    QString text;
    Buttons buttons = Buttons::Ok;
    Icon icon = Icon::Exclamation;
    int defaultButton = 1; // 1 the first button, 2 the second, 3 the third
    QString title = QStringLiteral("Kestrova");
};

// Every message box, question, beep and hourglass of the program goes through this one
// service: the windows use the Qt form, the tests a recording double that answers from a script.
class MessageService {
public:
    virtual ~MessageService() = default;

    virtual Answer Show(const Message& message) = 0;
    virtual void Beep() = 0;
    // The hourglass: shown while busy is true. Calls nest.
    virtual void SetBusy(bool busy) = 0;

    // A report or refusal: OK with the exclamation icon.
    Answer Report(const QString& text) { return Show({text, Buttons::Ok, Icon::Exclamation, 1}); }
    // A refusal preceded by the beep.
    Answer Refuse(const QString& text) {
        Beep();
        return Report(text);
    }
    // A confirmation: Yes/No with the exclamation icon, No the default.
    Answer Ask(const QString& text) { return Show({text, Buttons::YesNo, Icon::Exclamation, 2}); }
    // An error that no routine handled, shown once at the edge of the event that met it.
    Answer ShowError(const QString& text) { return Show({text, Buttons::Ok, Icon::Critical, 1}); }
};

// A name inside a message stands between double-quote characters.
[[nodiscard]] inline QString Quoted(const QString& name) {
    return u'"' + name + u'"';
}

// The question before a file or family is replaced: the name quoted, " Already Exists !", an
// empty line, "Overwrite It ?".
[[nodiscard]] inline QString OverwriteQuestion(const QString& name) {
    return Quoted(name) + QStringLiteral(" Already Exists !\n\nOverwrite It ?");
}

// The hourglass for the lifetime of a scope.
class BusyCursor {
public:
    explicit BusyCursor(MessageService& messages) : m_messages(messages) { m_messages.SetBusy(true); }
    ~BusyCursor() { m_messages.SetBusy(false); }
    BusyCursor(const BusyCursor&) = delete;
    BusyCursor& operator=(const BusyCursor&) = delete;

private:
    MessageService& m_messages;
};

} // namespace kestrova
