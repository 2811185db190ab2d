// The message boxes on screen: an operator copies a refusal or an error whole with Ctrl+C, the
// title aside, or selects part of it with the mouse.
#include "Frontend/QtMessageService.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QMessageBox>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

using namespace kestrova;

TEST(QtMessageService, CtrlCCopiesTheWholeTextOfEveryKindOfBox) {
    const Message messages[] = {
        {QStringLiteral("Disk full: \"C:\\Jobs\\PUNCH1\\Parts\\Job.prg\"\nThe Received Program Is Kept In "
                        "\"C:\\Kestrova\\Unfiled 1.prg\" !"),
         Buttons::Ok, Icon::Critical, 1},
        {QStringLiteral("\"Bracket\" Already Exists !\nOverwrite It ?"), Buttons::YesNo, Icon::Exclamation,
         2},
        {QStringLiteral("Insert A Disk In Drive A: !"), Buttons::RetryCancel, Icon::Exclamation, 1,
         QStringLiteral("Rainer Floppy")},
    };
    for (const Message& message : messages) {
        SCOPED_TRACE(message.text.toStdString());
        QGuiApplication::clipboard()->setText(QStringLiteral("something else"));
        bool selectable = false;
        bool seen = false;
        bool focused = false;
        // The box is modal: it is reached from the event loop it runs.
        QTimer::singleShot(0, [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (box == nullptr)
                return;
            seen = true;
            for (const QLabel* label : box->findChildren<QLabel*>())
                if (label->text() == message.text)
                    selectable = label->textInteractionFlags().testFlag(Qt::TextSelectableByMouse);
            // The key reaches the box as the operator presses it: at the button that has the focus.
            QWidget* focus = box->focusWidget();
            focused = focus != nullptr;
            QTest::keyClick(focused ? focus : box, Qt::Key_C, Qt::ControlModifier);
            box->done(QMessageBox::No);
        });
        QtMessageService service;
        (void)service.Show(message);
        ASSERT_TRUE(seen);
        EXPECT_EQ(QGuiApplication::clipboard()->text(), message.text);
        EXPECT_TRUE(selectable);
        EXPECT_TRUE(focused);
    }
}
