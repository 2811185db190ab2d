#pragma once

#include "Frontend/Session.h"

#include <QObject>

class QLineEdit;

namespace kestrova {

// The key filter of a name, pattern or number box: every typed character goes through
// FilterNameKey with the box's mode; a refused key beeps and never reaches the box. Keys that
// type nothing (arrows, Delete, the function keys) pass as they are.
class NameKeyFilter : public QObject {
    Q_OBJECT
public:
    // Filters the keys of box, which owns the filter.
    static void Install(Session& session, QLineEdit* box, int mode);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    NameKeyFilter(Session& session, QLineEdit* box, int mode);

    Session& m_session;
    QLineEdit* m_box;
    int m_mode;
};

} // namespace kestrova
