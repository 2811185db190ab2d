#pragma once

#include <QFrame>
#include <QString>

namespace kestrova {

// The status bar at the foot of the main window: the current data directory at the left edge,
// the machine's description right-aligned, both centred in the height of the box; between them,
// centred, the state of the background receive's line, kept across every Print.
class StatusBox : public QFrame {
    Q_OBJECT
public:
    explicit StatusBox(QWidget* parent = nullptr);

    // Clears the box and prints the two texts.
    void Print(const QString& left, const QString& right);
    [[nodiscard]] const QString& LeftText() const { return m_left; }
    [[nodiscard]] const QString& RightText() const { return m_right; }
    void ShowLineState(const QString& text);
    [[nodiscard]] const QString& LineStateText() const { return m_lineState; }

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_left;
    QString m_right;
    QString m_lineState;
};

} // namespace kestrova
