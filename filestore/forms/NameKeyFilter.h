#pragma once

#include "Frontend/Session.h"

#include <QObject>

class QComboBox;
class QLineEdit;

namespace kestrova {

// The key filter of a name, pattern or number box, on every way text can enter the box:
// - typed keys go through FilterNameKey with the box's mode, at the box itself and, for an
//   editable combo box, at the combo box that takes the keys while it holds the focus; a refused
//   key beeps and never reaches the box. Keys that type nothing (arrows, Delete, the function
//   keys, shortcuts) pass as they are;
// - text that arrives whole (pasted with Ctrl+V, Shift+Insert, the context menu or the middle
//   button, dropped, committed by an input method) is taken only when the box would then hold
//   what the filter could have taken key by key; otherwise the box keeps what it held, and beeps.
// A form's OK still checks the whole name again (NameFitsFilter): text that a program put into
// the box is not filtered.
class NameKeyFilter : public QObject {
    Q_OBJECT
public:
    // Filters what enters box, which owns the filter. mode is FilterNameKey's.
    static void Install(Session& session, QLineEdit* box, int mode);
    // Filters what enters the text field of an editable combo box, typed at either.
    static void Install(Session& session, QComboBox* box, int mode);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    NameKeyFilter(Session& session, QLineEdit* box, int mode);
    static NameKeyFilter* Attach(Session& session, QLineEdit* box, int mode);

    Session& m_session;
    QLineEdit* m_box;
    int m_mode;
};

} // namespace kestrova
