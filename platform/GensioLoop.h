#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>
#include <chrono>
#include <map>
#include <set>

struct gensio;
struct gensio_iod;
struct gensio_os_funcs;
struct gensio_waiter;

namespace kestrova {

// libgensio run by Qt's event loop on the user-interface thread. The library's own operating
// system functions do all the work; the few through which it asks to be woken (an fd to watch
// for reading or writing, a timer, a deferred call) are wrapped so that each request is
// mirrored by a QSocketNotifier or a QTimer, and whatever fires lets the library handle what is
// ready without waiting. So every gensio callback comes on this thread, inside Qt's loop, and
// nothing polls. Only this thread makes gensio calls: the library is set up for one thread.
class GensioLoop final : public QObject {
    Q_OBJECT
public:
    // The one loop of the program, made on first use and owned by the application object.
    [[nodiscard]] static GensioLoop& Instance();
    ~GensioLoop() override;

    [[nodiscard]] gensio_os_funcs* Funcs() const { return m_funcs; }
    // Lets the library handle whatever is ready now, without waiting.
    void Service();
    // Closes io and frees it, waiting up to ms for the close: a device server that serves one
    // connection at a time takes the next one only once it has seen this one end. Nothing of io
    // reaches its owner any more; a close that takes longer finishes in the loop.
    void CloseAndFree(gensio* io, int ms);

private:
    explicit GensioLoop(QObject* parent);

    struct Watch {
        QSocketNotifier* read = nullptr;
        QSocketNotifier* write = nullptr;
    };
    void Watched(gensio_iod* iod);
    void Unwatched(gensio_iod* iod);
    void Enable(gensio_iod* iod, bool write, bool on);
    void WakeAfter(std::chrono::nanoseconds delay);
    void OnWake();

    static int SetFdHandlers(gensio_iod* iod, void* data, void (*read)(gensio_iod*, void*),
                             void (*write)(gensio_iod*, void*), void (*except)(gensio_iod*, void*),
                             void (*cleared)(gensio_iod*, void*));
    static void ClearFdHandlers(gensio_iod* iod);
    static void ClearFdHandlersNoReport(gensio_iod* iod);
    static void SetReadHandler(gensio_iod* iod, bool enable);
    static void SetWriteHandler(gensio_iod* iod, bool enable);
    static void Closed(gensio* io, void* loop);

    gensio_waiter* m_closed = nullptr; // woken by each close that ends
    std::set<gensio*> m_closing;

    gensio_os_funcs* m_funcs = nullptr;
    std::map<int, Watch> m_watches;                               // by fd
    std::multiset<std::chrono::steady_clock::time_point> m_wakes; // the library's timers
    QTimer m_wake;
};

} // namespace kestrova
