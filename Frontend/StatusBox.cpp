#include "Frontend/StatusBox.h"

#include <QPainter>

namespace kestrova {

StatusBox::StatusBox(QWidget* parent) : QFrame(parent) {
    setFrameStyle(QFrame::Panel | QFrame::Sunken);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void StatusBox::Print(const QString& left, const QString& right) {
    m_left = left;
    m_right = right;
    update();
}

void StatusBox::ShowLineState(const QString& text) {
    m_lineState = text;
    update();
}

QSize StatusBox::sizeHint() const {
    return {400, fontMetrics().height() + 8};
}

void StatusBox::paintEvent(QPaintEvent* event) {
    QFrame::paintEvent(event);
    QPainter painter(this);
    const QFontMetrics metrics = fontMetrics();
    const QRect box = contentsRect();
    const int y = box.top() + box.height() / 2 - metrics.height() / 2 + metrics.ascent();
    painter.drawText(box.left(), y, m_left);
    painter.drawText(box.right() + 1 - metrics.horizontalAdvance(m_right), y, m_right);
    painter.drawText(box.left() + (box.width() - metrics.horizontalAdvance(m_lineState)) / 2, y, m_lineState);
}

} // namespace kestrova
