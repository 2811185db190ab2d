#include "ManyPrograms.h"

namespace kestrova::bench {

testing::InstallationFixture& ManyPrograms() {
    // Never destroyed: the run ends with the process, and its directory with the host's clean-up.
    static testing::InstallationFixture* fx = [] {
        auto* f = new testing::InstallationFixture;
        f->Load();
        QByteArray text = "%\r\nO1000 (PART)\r\n";
        for (int n = 10; text.size() < 4000; n += 10)
            text += "N" + QByteArray::number(n) + " G01 X" + QByteArray::number(n * 3) + ". Y125.5\r\n";
        for (const QString& name : ManyProgramNames())
            f->Write(QStringLiteral("C:\\Jobs\\PUNCH1\\Many\\") + name + QStringLiteral(".prg"), text);
        return f;
    }();
    return *fx;
}

QStringList ManyProgramNames(int count) {
    QStringList names;
    for (int i = 1; i <= count; ++i)
        names << QStringLiteral("PART%1").arg(i, 4, 10, QChar(u'0'));
    return names;
}

} // namespace kestrova::bench
