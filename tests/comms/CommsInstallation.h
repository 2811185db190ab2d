#pragma once

// The set-up the communication tests share: settings files changed value by value, and the
// background receive over a scripted line.
#include "InstallationFixture.h"
#include "ScriptedSerialLine.h"
#include "TestApplication.h"
#include "comms/BackgroundReceive.h"
#include "settings/SettingsFile.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace kestrova::testing {

inline const QString BackgroundCms = QStringLiteral("C:\\Kestrova\\Kestrova.cms");
inline const QString MachineCms = QStringLiteral("C:\\Kestrova\\Setup\\Data\\PUNCH1.cms");
inline const QString Parts = QStringLiteral("C:\\Jobs\\PUNCH1\\Parts\\");

using Values = std::vector<std::pair<QString, QString>>;

// Changes labelled values of one of the installation's settings files, each line found by its
// label; a label the file does not hold yet becomes a new last line.
inline void SetValues(const InstallationFixture& fx, const QString& file, const Values& values) {
    QStringList lines = fx.ReadLines(file);
    for (const auto& [label, value] : values) {
        auto at = std::find_if(lines.begin(), lines.end(), [&](const QString& line) {
            return line.section(u':', 0, 0).trimmed() == label;
        });
        if (at == lines.end())
            lines << LabelledLine(label, value);
        else
            *at = LabelledLine(label, value);
    }
    fx.WriteLines(file, lines);
}

// A file's bytes, or "<missing>": a table row that finds no file fails by its name, and the rows
// after it still run.
inline QByteArray Contents(const InstallationFixture& fx, const QString& path) {
    return fx.OnDisk(path) ? fx.Read(path) : QByteArray("<missing>");
}

// The background receive of a fresh installation over a scripted line. The installation's
// "Kestrova.cms" listens on COM2 with a "%" trailer and NUL and DEL filtered, unless Start is
// given other values; files may be changed before Start, and the device may be missing then.
struct ScriptedBackground {
    ScriptedBackground() { TestApplication(); }

    void Start(const Values& values = {}, bool devicePresent = true) {
        Values all{{"Port", "2"}};
        all.insert(all.end(), values.begin(), values.end());
        SetValues(fx, BackgroundCms, all);
        fx.Load();
        auto owned = std::make_unique<ScriptedSerialLine>();
        owned->SetDevicePresent(devicePresent);
        line = owned.get();
        receive = std::make_unique<BackgroundReceive>(fx.session(), std::move(owned));
        receive->Start();
    }

    InstallationFixture fx;
    ScriptedSerialLine* line = nullptr;
    std::unique_ptr<BackgroundReceive> receive;
};

} // namespace kestrova::testing
