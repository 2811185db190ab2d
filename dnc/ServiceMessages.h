#pragma once

#include "platform/MessageService.h"

#include <cstdio>

namespace kestrova {

// The message service of the headless DNC service: every message is one line on standard error,
// which the journal keeps; there is nobody to answer a question, so each is answered No.
class ServiceMessages final : public MessageService {
public:
    Answer Show(const Message& message) override {
        QString text = message.text;
        text.replace(u'\n', u' ');
        std::fprintf(stderr, "kestrova-dnc: %s\n", qPrintable(text));
        std::fflush(stderr);
        return message.buttons == Buttons::Ok ? Answer::Ok : Answer::No;
    }
    void Beep() override {}
    void SetBusy(bool) override {}
};

} // namespace kestrova
