#include "platform/FlowControl.h"

namespace kestrova {

namespace {

constexpr char Xon = 17;
constexpr char Xoff = 19;

} // namespace

bool TakeFlowControl(QByteArray& arrived, bool& xoff) {
    bool found = false;
    for (const char c : arrived) {
        if (c == Xoff) {
            xoff = true;
            found = true;
        } else if (c == Xon) {
            xoff = false;
            found = true;
        }
    }
    if (found)
        arrived.removeIf([](char c) { return c == Xon || c == Xoff; });
    return found;
}

} // namespace kestrova
