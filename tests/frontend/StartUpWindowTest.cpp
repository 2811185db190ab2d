// The main window's start-up and its environment loads, offscreen.
#include "Frontend/FrontEnd.h"
#include "Frontend/Reload.h"
#include "Frontend/StartUp.h"
#include "InstallationFixture.h"

#include <QBuffer>
#include <QImage>
#include <gtest/gtest.h>

using namespace kestrova;
using kestrova::testing::InstallationFixture;

namespace {

const QString LogoCfg = QStringLiteral("C:\\Kestrova\\Kestrlogo.cfg");

QByteArray Picture(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::darkBlue);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

// The size of the picture behind the window's controls; empty for a plain background.
QSize Logo(const FrontEnd& window) {
    const QBrush brush = window.centralWidget()->palette().brush(QPalette::Window);
    if (!window.centralWidget()->autoFillBackground() || brush.style() != Qt::TexturePattern)
        return {};
    return brush.texture().size();
}

TEST(StartUpWindow, EveryEnvironmentLoadShowsTheLogoItNames) {
    InstallationFixture fx;
    fx.Write(QStringLiteral("C:\\Kestrova\\Logo1.png"), Picture(4, 3));
    fx.WriteLines(LogoCfg, {QStringLiteral("C:\\Kestrova\\Logo1.png")});
    ASSERT_EQ(LoadAtStartUp(fx.session()), 0);
    ProgramLauncher launcher(fx.Files());
    FrontEnd window(fx.session(), launcher);
    EXPECT_EQ(Logo(window), QSize(4, 3));

    // Each reload after a package reads "Kestrlogo.cfg" and its picture again.
    const struct {
        const char* change;
        std::function<void()> apply;
        QSize shown;
    } reloads[] = {
        {"another picture named",
         [&] {
             fx.Write(QStringLiteral("C:\\Kestrova\\Logo2.png"), Picture(5, 2));
             fx.WriteLines(LogoCfg, {QStringLiteral("C:\\Kestrova\\Logo2.png")});
         },
         QSize(5, 2)},
        {"the picture changed", [&] { fx.Write(QStringLiteral("C:\\Kestrova\\Logo2.png"), Picture(6, 6)); },
         QSize(6, 6)},
        {"the picture gone", [&] { fx.Remove(QStringLiteral("C:\\Kestrova\\Logo2.png")); }, QSize()},
        {"back again", [&] { fx.WriteLines(LogoCfg, {QStringLiteral("C:\\Kestrova\\Logo1.png")}); },
         QSize(4, 3)},
        {"the picture unreadable",
         [&] { fx.Write(QStringLiteral("C:\\Kestrova\\Logo1.png"), "not a picture"); }, QSize()},
        {"no Kestrlogo.cfg",
         [&] {
             fx.Write(QStringLiteral("C:\\Kestrova\\Logo1.png"), Picture(4, 3));
             fx.Remove(LogoCfg);
         },
         QSize()},
    };
    for (const auto& r : reloads) {
        SCOPED_TRACE(r.change);
        r.apply();
        ReloadAfterChange(fx.session(), window);
        EXPECT_EQ(Logo(window), r.shown);
    }
    EXPECT_TRUE(fx.Messages().Log().isEmpty());
}

// The two state flags and the caption come first, so that a load that fails leaves a window
// with its caption; a failed load ends the start-up with its one message.
TEST(StartUpWindow, TheFlagsAndTheCaptionComeBeforeTheLoads) {
    for (const bool broken : {false, true}) {
        SCOPED_TRACE(broken ? "Kestrova.cfg missing" : "a whole installation");
        InstallationFixture fx;
        if (broken)
            fx.Remove(QStringLiteral("C:\\Kestrova\\Kestrova.cfg"));
        fx.Write(QStringLiteral("C:\\Kestrova\\Logo.png"), Picture(4, 3));
        fx.WriteLines(LogoCfg, {QStringLiteral("C:\\Kestrova\\Logo.png")});
        ProgramLauncher launcher(fx.Files());
        QString captionAtLoad;
        FrontEnd::FormStateFlags flagsAtLoad;
        FrontEnd window(fx.session(), launcher, {}, nullptr, [&](FrontEnd& w) {
            captionAtLoad = w.windowTitle();
            flagsAtLoad = w.FormFlags();
            return LoadAtStartUp(fx.session());
        });
        EXPECT_EQ(captionAtLoad, FrontEndCaption);
        EXPECT_EQ(flagsAtLoad, (FrontEnd::FormStateFlags{false, true}));
        EXPECT_EQ(window.windowTitle(), FrontEndCaption);
        EXPECT_EQ(window.StartUpStatus(), broken ? 1 : 0);
        EXPECT_EQ(fx.Messages().Texts().size(), broken ? 1 : 0);
        EXPECT_EQ(Logo(window), broken ? QSize() : QSize(4, 3)) << "the logo of the environment just loaded";
    }
}

} // namespace
