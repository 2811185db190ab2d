#include "Frontend/MenuSetUp.h"

namespace kestrova {

namespace {

EntrySetting Visible(const char* entry, bool visible) {
    return {QString::fromLatin1(entry), visible, std::nullopt};
}

} // namespace

const QStringList& TopLevelMenus() {
    static const QStringList menus{QStringLiteral("FileMenu"),
                                   QStringLiteral("DrawingPackage"),
                                   QStringLiteral("NestingPackage"),
                                   QStringLiteral("CreateProgram"),
                                   QStringLiteral("EditMenu"),
                                   QStringLiteral("CommsMenu"),
                                   QStringLiteral("ReverseEngineering"),
                                   QStringLiteral("SetupMenu"),
                                   QStringLiteral("Manuals")};
    return menus;
}

QList<EntrySetting> MenuSetUpTable(const GlobalSettings& g) {
    const bool cam = g.CamPackagesPresent;
    QList<EntrySetting> table;
    table << EntrySetting{QStringLiteral("MachineItem"), std::nullopt, g.MachineCount >= 2};

    // Without the drawing and program packages the suite is a DNC front end: nothing that
    // needs them is offered.
    for (const char* entry :
         {"RestoreSeparator", "RestoreItem", "DrawingPackage", "CreateProgram", "MaterialDatabase",
          "StockManager", "DataSeparator", "DataMenuMachine", "DataMenuDrawing", "DataMenuProgram"})
        table << Visible(entry, cam);
    if (cam)
        table << Visible("ShapeManager", true);
    table << Visible("DataMenuComms", true) << Visible("DataMenuManuals", true);

    const bool nesting = cam && g.NestingState == 2;
    table << Visible("NestingPackage", nesting) << Visible("ViewItem2", nesting);
    table << Visible("ReverseEngineering", cam && g.ReversePresent);
    table << Visible("ToolLibrary", cam && g.PunchingMachine);
    table << Visible("ProfileSettings", cam && g.ProfilingMachine);

    table << Visible("DataFileGeneral1", true) << Visible("DataFileGeneral2", cam);
    // Kept in the menu for their place and hidden on purpose: the front end does not offer them.
    table << Visible("DataFileGeneral3", false) << Visible("DataFileProgram7", false);

    const bool rainer = g.RainerType >= 1;
    table << Visible("RainerSeparator", rainer) << Visible("RainerMenu", rainer);

    const bool executives = g.WestinghouseProducer;
    table << Visible("ExecSeparator", executives) << Visible("ExecItem1", executives)
          << Visible("ExecItem2", executives);
    return table;
}

QList<EntrySetting> LockedMenus() {
    QList<EntrySetting> settings;
    for (const QString& menu : TopLevelMenus())
        settings << EntrySetting{menu, std::nullopt, false};
    return settings;
}

QList<EntrySetting> UnlockedMenus(const GlobalSettings& g) {
    QList<EntrySetting> settings;
    for (const QString& menu : TopLevelMenus()) {
        if (menu == QLatin1String("Manuals"))
            settings << EntrySetting{menu, g.ManualsAvailable, g.ManualsAvailable};
        else
            settings << EntrySetting{menu, std::nullopt, true};
    }
    return settings;
}

} // namespace kestrova
