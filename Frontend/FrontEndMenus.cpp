// The controls of the main window and its menu bar, in their order.
#include "Frontend/DataFiles.h"
#include "Frontend/FrontEnd.h"
#include "Frontend/StatusBox.h"
#include "platform/TextFile.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QListWidget>
#include <QMenuBar>
#include <QPixmap>
#include <QPushButton>
#include <QVBoxLayout>

namespace kestrova {

void FrontEnd::BuildControls() {
    auto* central = new QWidget(this);
    central->setObjectName(QStringLiteral("FrontEndArea"));
    setCentralWidget(central);

    m_receiveFrame = new QFrame(central);
    m_receiveFrame->setObjectName(QStringLiteral("ReceiveFrame"));
    m_receiveFrame->setFrameStyle(QFrame::Box | QFrame::Sunken);
    m_receiveButton = new QPushButton(QStringLiteral("Clear Receive List"), m_receiveFrame);
    m_receiveButton->setObjectName(QStringLiteral("ReceiveButton"));
    m_receiveList = new QListWidget(m_receiveFrame);
    m_receiveList->setObjectName(QStringLiteral("ReceiveList"));
    // One line per program: the list lays out in constant time however long it grows.
    m_receiveList->setUniformItemSizes(true);
    m_receiveList->installEventFilter(this);
    m_receiveLabel = new QLabel(QStringLiteral("Programs Received"), m_receiveFrame);
    m_receiveLabel->setObjectName(QStringLiteral("ReceiveLabel"));
    connect(m_receiveButton, &QPushButton::clicked, this, &FrontEnd::ReceiveButtonClicked);

    auto* frameLayout = new QVBoxLayout(m_receiveFrame);
    frameLayout->addWidget(m_receiveLabel);
    frameLayout->addWidget(m_receiveList, 1);
    frameLayout->addWidget(m_receiveButton, 0, Qt::AlignRight);
    // Shown by the background receive when it has received something.
    m_receiveFrame->setVisible(false);

    m_statusBar = new StatusBox(central);
    m_statusBar->setObjectName(QStringLiteral("StatusBar"));
    m_menuLine = new QFrame(central);
    m_menuLine->setObjectName(QStringLiteral("MenuLine"));
    m_menuLine->setFrameStyle(QFrame::HLine | QFrame::Sunken);

    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_menuLine);
    auto* frameRow = new QHBoxLayout;
    frameRow->setContentsMargins(12, 12, 12, 12);
    frameRow->addStretch(1);
    frameRow->addWidget(m_receiveFrame, 0);
    layout->addLayout(frameRow, 1);
    layout->addWidget(m_statusBar);
    m_receiveFrame->setMinimumWidth(240);
}

void FrontEnd::ShowLogo() {
    const QString picture = m_session.settings.LogoPicturePath;
    QPixmap logo;
    if (!picture.isEmpty() && m_session.files.IsFile(picture)) {
        try {
            if (!logo.loadFromData(ReadAllBytes(m_session.files, picture)))
                logo = QPixmap();
        } catch (const SystemError&) {
            // A logo that cannot be read is no reason to stop; the background stays plain.
        }
    }
    // No picture, or one that is gone or unreadable, clears the one shown before.
    QPalette palette = centralWidget()->palette();
    if (logo.isNull())
        palette.setBrush(QPalette::Window, QApplication::palette(centralWidget()).brush(QPalette::Window));
    else
        palette.setBrush(QPalette::Window, logo);
    centralWidget()->setAutoFillBackground(!logo.isNull());
    centralWidget()->setPalette(palette);
}

void FrontEnd::Register(const QString& name, QAction* action) {
    if (name.isEmpty())
        return;
    action->setObjectName(name);
    m_entries.insert(name, action);
    m_order << name;
}

QMenu* FrontEnd::AddMenu(QWidget* parent, const QString& name, const QString& caption) {
    QMenu* menu = nullptr;
    if (auto* bar = qobject_cast<QMenuBar*>(parent))
        menu = bar->addMenu(caption);
    else
        menu = static_cast<QMenu*>(parent)->addMenu(caption);
    menu->setObjectName(name);
    Register(name, menu->menuAction());
    return menu;
}

QAction* FrontEnd::AddItem(QMenu* menu, const QString& name, const QString& caption,
                           std::function<void()> handler) {
    QAction* action = menu->addAction(caption);
    Register(name, action);
    connect(action, &QAction::triggered, this, [this, handler = std::move(handler)] { Handle(handler); });
    return action;
}

QAction* FrontEnd::AddBarEntry(const QString& name, const QString& caption, std::function<void()> handler) {
    QAction* action = menuBar()->addAction(caption);
    Register(name, action);
    connect(action, &QAction::triggered, this, [this, handler = std::move(handler)] { Handle(handler); });
    return action;
}

QAction* FrontEnd::AddSeparator(QMenu* menu, const QString& name) {
    QAction* separator = menu->addSeparator();
    Register(name, separator);
    return separator;
}

void FrontEnd::BuildMenus() {
    menuBar()->setObjectName(QStringLiteral("MenuBar"));
    BuildFileMenu();
    AddBarEntry(QStringLiteral("DrawingPackage"), QStringLiteral("&Draw"),
                [this] { StartPackageEntry(Package::Drawing); });
    AddBarEntry(QStringLiteral("NestingPackage"), QStringLiteral("&Nesting"),
                [this] { StartPackageEntry(Package::Nesting); });
    AddBarEntry(QStringLiteral("CreateProgram"), QStringLiteral("&Program"),
                [this] { StartPackageEntry(Package::ProgramCreation); });
    BuildEditMenu();
    BuildCommsMenu();
    AddBarEntry(QStringLiteral("ReverseEngineering"), QStringLiteral("&Reverse"),
                [this] { StartPackageEntry(Package::ReverseEngineering); });
    BuildSetupMenu();
    AddBarEntry(QStringLiteral("Manuals"), QStringLiteral("&Help"), [this] { OpenManualEntry(); });
}

void FrontEnd::BuildFileMenu() {
    QMenu* file = AddMenu(menuBar(), QStringLiteral("FileMenu"), QStringLiteral("&File"));
    AddItem(file, QStringLiteral("MachineItem"), QStringLiteral("Select &Machine"),
            [this] { SelectMachineEntry(); });
    AddSeparator(file);
    const QStringList directories{QStringLiteral("Change &Directory"), QStringLiteral("Create Directory"),
                                  QStringLiteral("Rename Directory"), QStringLiteral("Delete Directory")};
    for (int i = 1; i <= directories.size(); ++i)
        AddItem(file, QStringLiteral("DirectoryItem%1").arg(i), directories.at(i - 1),
                [this, i] { DirectoryEntry(i); });
    AddSeparator(file);
    AddItem(file, QStringLiteral("SearchItem"), QStringLiteral("File &Search"), [this] { SearchEntry(); });
    const QStringList fileItems{QStringLiteral("Delete File(s)"), QStringLiteral("Rename File As ..."),
                                QStringLiteral("Copy File As ..."), QStringLiteral("Move File(s) To ..."),
                                QStringLiteral("Copy File(s) To ...")};
    for (int i = 1; i <= fileItems.size(); ++i)
        AddItem(file, QStringLiteral("FileItem%1").arg(i), fileItems.at(i - 1), [this, i] { FileEntry(i); });
    AddSeparator(file, QStringLiteral("RestoreSeparator"));
    AddItem(file, QStringLiteral("RestoreItem"), QStringLiteral("Restore Drawing"),
            [this] { RestoreEntry(); });
    AddSeparator(file);
    const QStringList external{QStringLiteral("Import File(s)"), QStringLiteral("Import File As ..."),
                               QStringLiteral("Export File(s)"), QStringLiteral("Export File As ...")};
    for (int i = 1; i <= external.size(); ++i)
        AddItem(file, QStringLiteral("ExternalItem%1").arg(i), external.at(i - 1),
                [this, i] { OpenExternalForm(i); });
    AddSeparator(file, QStringLiteral("RainerSeparator"));
    QMenu* rainer = AddMenu(file, QStringLiteral("RainerMenu"), QStringLiteral("Rainer"));
    const QStringList rainerItems{QStringLiteral("&Export"), QStringLiteral("&Import"),
                                  QStringLiteral("Delete"), QStringLiteral("Format")};
    for (int i = 1; i <= rainerItems.size(); ++i)
        AddItem(rainer, QStringLiteral("RainerItem%1").arg(i), rainerItems.at(i - 1),
                [this, i] { RainerEntry(i); });
    AddSeparator(file);
    AddItem(file, QStringLiteral("ExitItem"), QStringLiteral("E&xit"), [this] { close(); });
}

void FrontEnd::BuildEditMenu() {
    QMenu* edit = AddMenu(menuBar(), QStringLiteral("EditMenu"), QStringLiteral("&Edit"));
    // The edit form's operation codes: edit 1, new 2, the reports 3 and 4, the rewrites 5 to 7.
    AddItem(edit, QStringLiteral("EditItem1"), QStringLiteral("&Edit Program"), [this] { OpenEditForm(1); });
    AddItem(edit, QStringLiteral("EditItem2"), QStringLiteral("New Program"), [this] { OpenEditForm(2); });
    AddSeparator(edit);
    const QStringList strip{QStringLiteral("Renumber Program"), QStringLiteral("Strip Numbers"),
                            QStringLiteral("Remove Spaces")};
    for (int i = 1; i <= strip.size(); ++i)
        AddItem(edit, QStringLiteral("StripItem%1").arg(i), strip.at(i - 1),
                [this, i] { OpenEditForm(4 + i); });
    AddSeparator(edit);
    AddItem(edit, QStringLiteral("ViewItem1"), QStringLiteral("View Program Report"),
            [this] { OpenEditForm(3); });
    AddItem(edit, QStringLiteral("ViewItem2"), QStringLiteral("View Nest Report"),
            [this] { OpenEditForm(4); });
    AddSeparator(edit);
    AddItem(edit, QStringLiteral("HistoryItem"), QStringLiteral("Program &History"),
            [this] { OpenHistoryForm(); });
}

void FrontEnd::BuildCommsMenu() {
    QMenu* comms = AddMenu(menuBar(), QStringLiteral("CommsMenu"), QStringLiteral("&Communications"));
    // The receive form's operations: 2 a program, 6 an executive.
    AddItem(comms, QStringLiteral("CommsItem1"), QStringLiteral("&Send Program"),
            [this] { OpenSendForm(SendKind::Program); });
    AddItem(comms, QStringLiteral("CommsItem2"), QStringLiteral("&Receive Program"),
            [this] { OpenReceiveForm(2); });
    AddSeparator(comms, QStringLiteral("ExecSeparator"));
    AddItem(comms, QStringLiteral("ExecItem1"), QStringLiteral("Send Executive"),
            [this] { OpenSendForm(SendKind::Executive); });
    AddItem(comms, QStringLiteral("ExecItem2"), QStringLiteral("Receive Executive"),
            [this] { OpenReceiveForm(6); });
    AddSeparator(comms);
    AddItem(comms, QStringLiteral("TransferLogItem"), QStringLiteral("Transfer &Log"),
            [this] { OpenTransferLog(); });
    AddItem(comms, QStringLiteral("DncMonitorItem"), QStringLiteral("DNC &Monitor"),
            [this] { OpenDncMonitor(); });
}

void FrontEnd::BuildSetupMenu() {
    QMenu* setup = AddMenu(menuBar(), QStringLiteral("SetupMenu"), QStringLiteral("&Setup"));
    AddItem(setup, QStringLiteral("ToolLibrary"), QStringLiteral("&Tool Library"),
            [this] { StartPackageEntry(Package::ToolLibrary); });
    AddItem(setup, QStringLiteral("MaterialDatabase"), QStringLiteral("&Material Database"),
            [this] { SettingsManagerEntry(1); });
    AddItem(setup, QStringLiteral("ProfileSettings"), QStringLiteral("&Profile Settings"),
            [this] { SettingsManagerEntry(7); });
    AddItem(setup, QStringLiteral("StockManager"), QStringLiteral("Stock Manager"),
            [this] { StartPackageEntry(Package::StockManager); });
    AddItem(setup, QStringLiteral("ShapeManager"), QStringLiteral("Shapes && Tooling"),
            [this] { StartPackageEntry(Package::ShapesTooling); });
    AddSeparator(setup, QStringLiteral("DataSeparator"));
    BuildDataFilesMenu(setup);
    AddItem(setup, QStringLiteral("RestoreDefaults"), QStringLiteral("Restore Defaults"),
            [this] { RestoreDefaultsEntry(); });
    QMenu* exportSystem =
        AddMenu(setup, QStringLiteral("ExportSystemMenu"), QStringLiteral("Export System Setup"));
    AddItem(exportSystem, QStringLiteral("ExportSystem1"), QStringLiteral("Current Machine"),
            [this] { InFrame({}); });
    AddItem(exportSystem, QStringLiteral("ExportSystem2"), QStringLiteral("All Machines"),
            [this] { InFrame({}); });
}

void FrontEnd::BuildDataFilesMenu(QMenu* setup) {
    QMenu* data = AddMenu(setup, QStringLiteral("DataMenuMain"), QStringLiteral("Edit Data Files"));
    const QHash<QString, QString> submenuCaptions{
        {QStringLiteral("DataMenuMachine"), QStringLiteral("Machine Specifications")},
        {QStringLiteral("DataMenuDrawing"), QStringLiteral("Drawing Package")},
        {QStringLiteral("DataMenuProgram"), QStringLiteral("Program Creation")},
        {QStringLiteral("DataMenuComms"), QStringLiteral("Communications Settings")},
        {QStringLiteral("DataMenuManuals"), QStringLiteral("Kestrova Manuals")}};
    // The captions and control names are the same for every machine; the files are looked up
    // again when an entry is clicked, for the machine current then.
    QHash<QString, QMenu*> submenus;
    for (const DataFileEntry& item : DataFileEntries(m_session.settings)) {
        QMenu* menu = data;
        if (!item.submenu.isEmpty()) {
            menu = submenus.value(item.submenu);
            if (!menu) {
                menu = AddMenu(data, item.submenu, submenuCaptions.value(item.submenu));
                submenus.insert(item.submenu, menu);
            }
        }
        AddItem(menu, item.entry, item.caption, [this, entry = item.entry] { EditDataFile(entry); });
    }
}

} // namespace kestrova
