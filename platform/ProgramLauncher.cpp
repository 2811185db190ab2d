#include "platform/ProgramLauncher.h"

#include "platform/Blanks.h"
#include "platform/SystemPath.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTimer>
#include <algorithm>

namespace kestrova {

namespace {

using namespace std::chrono_literals;

// Short enough that a finished package is noticed at once, long enough to cost nothing.
constexpr auto PollInterval = 20ms;
// "Idle for input" has no meaning for a host process: it counts as such once it has started.
constexpr int StartTimeoutMs = 30000;

class HostProcess final : public StartedProgram {
public:
    explicit HostProcess(std::unique_ptr<QProcess> process) : m_process(std::move(process)) {}
    ~HostProcess() override {
        // Nobody waits any more: the operator's work in the program must not be cut off. The
        // handle goes once the program has ended; a front end that ends first leaves it running.
        if (m_process->state() != QProcess::NotRunning) {
            QProcess* running = m_process.release();
            QObject::connect(running, &QProcess::finished, running, &QObject::deleteLater);
        }
    }
    [[nodiscard]] bool Running() const override { return m_process->state() != QProcess::NotRunning; }

private:
    std::unique_ptr<QProcess> m_process;
};

void CannotStart(const QString& program, const QString& reason) {
    qWarning().noquote() << QStringLiteral("Kestrova: cannot start \"%1\": %2").arg(program, reason);
}

qsizetype LastSeparator(const QString& program) {
    return std::max({program.lastIndexOf(u'\\'), program.lastIndexOf(u'/'), program.lastIndexOf(u':')});
}

bool IsBareName(const QString& program) {
    return LastSeparator(program) < 0;
}

} // namespace

std::optional<ProgramLauncher::HostCommand> ProgramLauncher::Plan(const QString& program,
                                                                  QStringList arguments) const {
    const QString name = FromHostNotation(TrimBlanks(program));
    if (name.isEmpty()) {
        CannotStart(program, QStringLiteral("no program named"));
        return std::nullopt;
    }
    QString host;
    const FileSystem::Resolved r = m_files.Resolve(name);
    if (r.exists && !r.isDirectory)
        host = r.host;
    else if (IsBareName(name))
        host = QStandardPaths::findExecutable(name); // as the shell finds "notepad" on the search path
    if (host.isEmpty()) {
        CannotStart(r.full.isEmpty() ? name : r.full, QStringLiteral("no such file"));
        return std::nullopt;
    }
    const QFileInfo info(host);
    if (info.isExecutable())
        return HostCommand{host, arguments};
    if (info.suffix().compare(QLatin1String("exe"), Qt::CaseInsensitive) == 0) {
        const QString wine = QStandardPaths::findExecutable(QStringLiteral("wine"));
        if (wine.isEmpty()) {
            CannotStart(r.full, QStringLiteral("a Windows program, and wine is not installed"));
            return std::nullopt;
        }
        arguments.prepend(host);
        return HostCommand{wine, arguments};
    }
    CannotStart(r.full, QStringLiteral("not an executable file"));
    return std::nullopt;
}

QStringList ProgramLauncher::HostFiles(const QStringList& files) const {
    QStringList hostFiles;
    for (const QString& file : files) {
        const QString host = m_files.HostPath(file);
        hostFiles << (host.isEmpty() ? file : host);
    }
    return hostFiles;
}

std::unique_ptr<StartedProgram> ProgramLauncher::Run(const HostCommand& command, const QString& program) {
    auto process = std::make_unique<QProcess>();
    process->setProgram(command.program);
    process->setArguments(command.arguments);
    process->setWorkingDirectory(m_files.HostPath(m_files.CurrentDirectory()));
    // The suite's programs share the front end's console, as inherited handles do.
    process->setProcessChannelMode(QProcess::ForwardedChannels);
    process->setInputChannelMode(QProcess::ForwardedInputChannel);
    process->start();
    if (!process->waitForStarted(StartTimeoutMs)) {
        CannotStart(program, process->errorString());
        return nullptr;
    }
    return std::make_unique<HostProcess>(std::move(process));
}

std::unique_ptr<StartedProgram> ProgramLauncher::Start(const QString& program, const QStringList& files) {
    const auto command = Plan(program, HostFiles(files));
    if (!command)
        return nullptr;
    return Run(*command, program);
}

bool ProgramLauncher::StartDetached(const QString& program, const QStringList& files) {
    const auto command = Plan(program, HostFiles(files));
    if (!command)
        return false;
    if (!QProcess::startDetached(command->program, command->arguments,
                                 m_files.HostPath(m_files.CurrentDirectory()))) {
        CannotStart(program, QStringLiteral("the host refused to start it"));
        return false;
    }
    return true;
}

std::unique_ptr<StartedProgram> ProgramLauncher::StartCommandLine(const QString& commandLine) {
    QStringList words = QProcess::splitCommand(TrimBlanks(commandLine));
    if (words.isEmpty()) {
        CannotStart(commandLine, QStringLiteral("no program named"));
        return nullptr;
    }
    const QString program = words.takeFirst();
    const auto command = Plan(program, words);
    if (!command)
        return nullptr;
    return Run(*command, program);
}

std::unique_ptr<StartedProgram> ProgramLauncher::StartEditor(const QString& command, const QString& file) {
    const QString program = TrimBlanks(command);
    const QString lastName = program.mid(LastSeparator(program) + 1);
    const bool notepad =
        lastName.isEmpty() || lastName.compare(QLatin1String("Notepad.exe"), Qt::CaseInsensitive) == 0;
    if (!notepad) {
        if (auto started = Start(program, {file}))
            return started;
    }
    if (!m_builtInEditor) {
        CannotStart(program, QStringLiteral("no built-in editor in this program"));
        return nullptr;
    }
    return m_builtInEditor(m_files.FullPath(file));
}

void LetPendingEventsRun() {
    QCoreApplication::processEvents(QEventLoop::AllEvents);
}

bool PauseInEventLoop(std::chrono::milliseconds pause) {
    QEventLoop loop;
    QTimer::singleShot(pause, &loop, &QEventLoop::quit);
    // An application that has been told to quit refuses every further event loop at once.
    return loop.exec() == 0;
}

bool WaitFor(const StartedProgram& program) {
    while (program.Running())
        if (!PauseInEventLoop(PollInterval))
            return false;
    return true;
}

} // namespace kestrova
