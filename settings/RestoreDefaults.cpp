#include "settings/RestoreDefaults.h"

namespace kestrova {

namespace {

void CopyIfPresent(FileSystem& files, const QString& source, const QString& target) {
    if (files.Exists(source))
        files.Copy(source, target);
}

} // namespace

const QStringList& RestoredExtensions() {
    static const QStringList extensions{
        QStringLiteral("arp"), QStringLiteral("dgt"), QStringLiteral("drp"), QStringLiteral("lyt"),
        QStringLiteral("mch"), QStringLiteral("mlt"), QStringLiteral("msr"), QStringLiteral("prm"),
        QStringLiteral("pst"), QStringLiteral("rvs"), QStringLiteral("stn"), QStringLiteral("tme"),
        QStringLiteral("trt"), QStringLiteral("usr"), QStringLiteral("wrd"), QStringLiteral("xtr"),
        QStringLiteral("pfl"), QStringLiteral("prf"), QStringLiteral("pls"), QStringLiteral("lsr")};
    return extensions;
}

void RestoreDefaults(Session& session, MainWindowFrame& frame) {
    GlobalSettings& g = session.settings;
    FileSystem& files = session.files;

    const QString warning = QStringLiteral("Any Changes To The Data Files For\n") + g.MachineDescription +
                            QStringLiteral("\nWill be Lost ! ");
    const Answer answer = session.messages.Show({warning, Buttons::OkCancel, Icon::Exclamation, 2});
    g.LastAnswer = Int16::From(int(answer));
    if (answer != Answer::Ok)
        return;

    const MenusLocked locked(frame);
    const BusyCursor busy(session.messages);
    const QString defaults = g.SetupPath + QStringLiteral("Data\\Default\\") + g.MachineDir + u'.';
    CopyIfPresent(files, defaults + QStringLiteral("cms"), MachineFile(g, QStringLiteral("cms")));
    CopyIfPresent(files, g.SetupPath + QStringLiteral("Data\\Default\\Kestrova.cms"),
                  g.ProgramPath + QStringLiteral("Kestrova.cms"));
    if (!g.CamPackagesPresent)
        return;
    for (const QString& extension : RestoredExtensions())
        CopyIfPresent(files, defaults + extension, MachineFile(g, extension));
}

} // namespace kestrova
