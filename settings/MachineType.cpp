#include "settings/MachineType.h"

#include <initializer_list>

namespace kestrova {

namespace {

bool ContainsAll(const QString& text, std::initializer_list<const char*> keys) {
    for (const char* key : keys)
        if (!text.contains(QLatin1String(key)))
            return false;
    return true;
}

} // namespace

void SetMachineType(GlobalSettings& g, const QString& controlType, const QString& description) {
    const QString type = controlType.toUpper();
    const QString desc = description.toUpper();
    const bool rhodesQuartz = ContainsAll(desc, {"RHODES", "QUARTZ"});

    g.TerminalMode = ContainsAll(type, {"TERMINAL", "KESTROVA"});

    g.IntermotionType = 0;
    if (type.contains(QLatin1String("INTERMOTION"))) {
        // Every digit is tested in turn; the last one present wins.
        for (int digit = 1; digit <= 5; ++digit)
            if (type.contains(QString::number(digit)))
                g.IntermotionType = Int16::From(digit);
    }
    if (type.contains(QLatin1String("IMOTION")))
        g.IntermotionType = 6;
    if (rhodesQuartz)
        g.IntermotionType = 6;

    g.RhodesModel = 0;
    if (rhodesQuartz)
        g.RhodesModel = desc.contains(QLatin1String("MK1")) ? Int16(1) : Int16(2);

    g.WestinghouseProducer = ContainsAll(type, {"WESTINGHOUSE", "PRODUCER"});
    g.Ge550Control = desc.contains(QLatin1String("GE550"));
    g.RaskinRt85 = ContainsAll(type, {"RASKIN", "RT", "85"});
    g.ViprosMachine = desc.contains(QLatin1String("VIPROS"));
    g.RainerType = 0;
    if (desc.contains(QLatin1String("RAINER")))
        g.RainerType = type.contains(QLatin1String("(V2)")) ? Int16(2) : Int16(1);
    g.IbhBehren = ContainsAll(desc, {"IBH", "BEHREN"});
    g.TrumfBoschTc = ContainsAll(desc, {"TRUMF", "BOSCH", "TC"});
    g.PullmaxMachine = desc.contains(QLatin1String("PULLMATIC")) || desc.contains(QLatin1String("PULLMAX"));
    g.LvdRs = ContainsAll(desc, {"LVD", "RS"});
}

} // namespace kestrova
