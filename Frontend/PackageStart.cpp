#include "Frontend/PackageStart.h"

#include "Frontend/Reload.h"

namespace kestrova {

PackageInfo InfoOf(Package package) {
    switch (package) {
    case Package::Drawing:
        return {QStringLiteral("DrawingPackage"), QStringLiteral("Kestrdrw.exe"),
                QStringLiteral("Drawing Package is Unavailable !"), true};
    case Package::Nesting:
        return {QStringLiteral("NestingPackage"), QStringLiteral("Kestrnst.exe"),
                QStringLiteral("Nesting Package is Unavailable !"), true};
    case Package::ProgramCreation:
        return {QStringLiteral("CreateProgram"), QStringLiteral("Kestrprg.exe"),
                QStringLiteral("Program Creation is Unavailable !"), true};
    case Package::ReverseEngineering:
        return {QStringLiteral("ReverseEngineering"), QStringLiteral("Kestrrvs.exe"),
                QStringLiteral("Reverse Engineering is Unavailable !"), true};
    case Package::ToolLibrary:
        return {QStringLiteral("ToolLibrary"), QStringLiteral("Kestrtol.exe"),
                QStringLiteral("Tool Library is Unavailable !"), false};
    case Package::StockManager:
        return {QStringLiteral("StockManager"), QStringLiteral("Kestrstk.exe"),
                QStringLiteral("Stock Manager is Unavailable !"), false};
    case Package::ShapesTooling:
        return {QStringLiteral("ShapeManager"), QStringLiteral("Kestrshp.exe"),
                QStringLiteral("Shapes & Tooling is Unavailable !"), true};
    }
    return {};
}

void StartPackage(Session& session, ProgramLauncher& launcher, MainWindowFrame& frame, Package package) {
    const PackageInfo info = InfoOf(package);
    const GlobalSettings& g = session.settings;
    FileSystem& files = session.files;

    // The packages find their own files relative to the program directory.
    files.ChangeDrive(g.ProgramPath.left(2));
    files.ChangeDirectory(g.ProgramPath);

    const QString executable = g.ProgramPath + info.executable;
    if (!files.Exists(executable)) {
        session.messages.Refuse(info.unavailable);
        return;
    }
    const auto program = launcher.Start(executable);
    if (!program)
        return;
    {
        // The same package is never started twice; the rest of the window stays at hand.
        const EntryDisabled running(frame, info.entry);
        // A front end that ends meanwhile leaves the package running and reloads nothing.
        if (WaitFor(*program) && info.mayChange)
            ReloadAfterChange(session, frame);
    }
}

} // namespace kestrova
