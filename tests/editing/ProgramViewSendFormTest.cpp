// The send form's "View": the drawing of the program chosen, before it is sent.
#include "InstallationFixture.h"
#include "ScriptedSerialLine.h"
#include "comms/forms/SendForm.h"
#include "editing/forms/ProgramView.h"
#include "editing/forms/ProgramViewDialog.h"

#include <QApplication>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

using namespace kestrova;
using namespace kestrova::testing;

namespace {

class ProgramViewSendFormTest : public ::testing::Test {
protected:
    ProgramViewSendFormTest() {
        fx.WriteLines(QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\Cover.prg"),
                      {"%", "(SHEET 500X400)", "T3 G01 X10 Y10", "X20 Y10", "%"});
        fx.Load();
    }
    SerialLineFactory Lines() {
        return [] { return std::make_unique<ScriptedSerialLine>(); };
    }

    // What the view shows of a program when "View" is pressed with it current, seen from
    // inside the open dialog, which Esc then closes.
    struct Seen {
        bool opened = false;
        std::uint32_t elements = 0;
        QStringList notes;
        bool closedByEsc = false;
    };
    Seen ViewProgram(SendForm& form, const QString& name) {
        auto* files = form.findChild<QListWidget*>("FileList");
        const auto items = files->findItems(name, Qt::MatchExactly);
        files->setCurrentItem(items.isEmpty() ? nullptr : items.first());
        Seen seen;
        QTimer::singleShot(0, &form, [&] {
            auto* dialog = form.findChild<ProgramViewDialog*>();
            if (!dialog || !dialog->isVisible())
                return;
            seen.opened = true;
            (void)QTest::qWaitFor([&] { return !dialog->View().Loading(); }, 5000);
            seen.elements = dialog->View().Drawing().Count();
            seen.notes = dialog->View().Notes();
            QTest::keyClick(&dialog->View(), Qt::Key_Escape);
            seen.closedByEsc = !dialog->isVisible();
            if (dialog->isVisible())
                dialog->reject();
        });
        form.findChild<QPushButton*>("SendView")->click();
        return seen;
    }

    InstallationFixture fx;
};

TEST_F(ProgramViewSendFormTest, ViewShowsTheCurrentProgramInItsFrameAndEscClosesItButNoProgramOpensNothing) {
    SendForm form(fx.session(), Lines());
    ASSERT_TRUE(form.Loaded());
    form.show();
    EXPECT_EQ(form.findChild<QPushButton*>("SendView")->text(), QStringLiteral("&View"));

    struct Case {
        QString program;
        std::uint32_t elements;
        QStringList notes;
    };
    const Case cases[] = {
        {QStringLiteral("Cover"), 2, {QStringLiteral("Sheet 500 x 400 mm")}},
        // No sheet named: the machine's travel from its machine file.
        {QStringLiteral("Bracket"), 0, {QStringLiteral("Travel 2500 x 1250 mm")}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.program.toStdString());
        const Seen seen = ViewProgram(form, c.program);
        EXPECT_TRUE(seen.opened);
        EXPECT_EQ(seen.elements, c.elements);
        EXPECT_EQ(seen.notes, c.notes);
        EXPECT_TRUE(seen.closedByEsc);
    }
    EXPECT_TRUE(fx.Messages().Texts().isEmpty());

    // No program, or a missing one, opens nothing.
    fx.Messages().Clear();
    EXPECT_FALSE(ViewProgram(form, QString()).opened);
    EXPECT_EQ(fx.Messages().Beeps(), 1);

    fx.Remove(QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\Cover.prg"));
    EXPECT_FALSE(ViewProgram(form, QStringLiteral("Cover")).opened);
    ASSERT_EQ(fx.Messages().Texts().size(), 1);
    EXPECT_TRUE(fx.Messages().Texts().front().contains(QStringLiteral("Cover.prg")))
        << fx.Messages().Texts().front().toStdString();
}

} // namespace
