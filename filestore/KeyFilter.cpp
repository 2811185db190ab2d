#include "filestore/KeyFilter.h"

namespace kestrova {

namespace {

constexpr int Backspace = 8;
constexpr int Enter = 13;

bool IsDigit(int c) {
    return c >= '0' && c <= '9';
}
bool IsLetter(int c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
bool In(int c, const char* set) {
    for (const char* p = set; *p; ++p)
        if (c == static_cast<unsigned char>(*p))
            return true;
    return false;
}

struct Rule {
    bool known = false;
    bool nameSet = false;   // letters, digits, name punctuation and a blank not in first place
    const char* extra = ""; // further characters accepted
    bool letters = false;
    int limit = 0; // 0: none
};

Rule RuleFor(int mode) {
    switch (mode) {
    case -1:
        return {true, false, ""};
    case -2:
        return {true, false, "-"};
    case -4:
        return {true, false, "."};
    case -5:
        return {true, false, "-."};
    case -6:
        return {true, false, "()*+-./^"};
    case -7:
        return {true, false, "()*+-./^Pp"};
    case -8:
        return {true, false, "()*+-./^Pp", true};
    case -80:
        return {true, false, "-_", true, 8};
    case -83:
        return {true, false, "-._", true, 12};
    case -32:
        return {true, true, "", true, 32};
    case -321:
        return {true, true, "", true, 36};
    case -322:
        return {true, true, "*?", true, 36};
    case -48:
        return {true, true, "", true, 48};
    default:
        if (mode >= 1)
            return {true, true, "", true, mode};
        return {};
    }
}

// Whether the mode takes the key into a box holding text with selectionLength characters selected.
bool Takes(int keyCode, int mode, const QString& text, int selectionLength) {
    if (keyCode == Backspace || keyCode == Enter)
        return true;
    const Rule rule = RuleFor(mode);
    if (!rule.known)
        return true;
    bool accepted = IsDigit(keyCode) || In(keyCode, rule.extra) || (rule.letters && IsLetter(keyCode));
    if (rule.nameSet) {
        if (In(keyCode, "&()+-._"))
            accepted = true;
        if (keyCode == ' ')
            accepted = !text.isEmpty();
    }
    if (accepted && rule.limit > 0 && text.size() >= rule.limit && selectionLength == 0)
        accepted = false;
    return accepted;
}

} // namespace

int FilterNameKey(MessageService& messages, int keyCode, int mode, const QString& text, int selectionLength) {
    if (Takes(keyCode, mode, text, selectionLength))
        return keyCode;
    messages.Beep();
    return 0;
}

bool NameFitsFilter(const QString& text, int mode) {
    if (!RuleFor(mode).known)
        return true;
    for (qsizetype i = 0; i < text.size(); ++i) {
        // Backspace and Enter edit the box or end the entry; inside a name they are characters.
        const int code = text.at(i).unicode();
        if (code == Backspace || code == Enter || !Takes(code, mode, text.left(i), 0))
            return false;
    }
    return true;
}

bool BoxTextFitsFilter(const QString& text, int mode) {
    const int limit = RuleFor(mode).limit;
    qsizetype blanks = 0;
    while (blanks < text.size() && text.at(blanks) == u' ')
        ++blanks;
    return NameFitsFilter(text.mid(blanks), mode) && (limit == 0 || text.size() <= limit);
}

} // namespace kestrova
