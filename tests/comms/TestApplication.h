#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>
#include <functional>

namespace kestrova::testing {

// The one application object of the communication tests: the pause and the lines need an
// event loop. Tests of the windows bring their own (a QApplication), which is then the one.
inline QCoreApplication& TestApplication() {
    if (QCoreApplication* running = QCoreApplication::instance())
        return *running;
    static int argc = 1;
    static char name[] = "test_comms";
    static char* argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
    return app;
}

// Lets events run until done() holds or the (generous) limit passes; true when done. The loop
// sleeps until the next event; a light tick wakes it to look at conditions outside Qt.
inline bool RunEventsUntil(const std::function<bool()>& done, int limitMs = 15000) {
    TestApplication();
    QDeadlineTimer deadline(limitMs);
    QTimer tick;
    tick.start(20);
    while (!done()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
    return true;
}

} // namespace kestrova::testing
