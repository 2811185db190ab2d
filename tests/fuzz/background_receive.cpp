// The background receive's stream, with its header lines, against a model of the filing rules.
// After any stream the installation holds exactly what the model says: every program that
// ended with its trailer filed once, in the directory its header or the defaults name, with
// the text the rules give; one list line per program; nothing anywhere else, and no
// temporary file left once the receive stops.
//
// Input: byte 0 picks the trailer and end sequence, byte 1 the receive filter, byte 2 the size
// of the chunks the line delivers (0: all at once), byte 3 whether the stream's bytes are taken
// as they are or mapped onto the characters that matter to the rules; the rest is the stream.
#include "FuzzSupport.h"
#include "InstallationFixture.h"
#include "ScriptedSerialLine.h"
#include "comms/BackgroundReceive.h"
#include "comms/ReceivedHeader.h"
#include "filestore/Names.h"
#include "platform/Blanks.h"
#include "platform/ScreenText.h"
#include "settings/SettingsFile.h"

#include <QDirIterator>
#include <QMap>
#include <QSet>

using namespace kestrova;

namespace {

const char* const Trailers[] = {"1,37", "1,13,1,10,1,37", "2,37", "1,3", "", "1,37,1,13"};
const char* const EndSequences[] = {"", "1,37", "1,13,1,10"};
const char* const Filters[] = {"0,127", "", "37", "13,10"};
const char Alphabet[] = {'a', 'b', ' ', '%', '\r', '\n', '\t', 23,  24,  25,  'P', '1', '.', '/', '\\',
                         ':', 0,   127, 3,   'N',  'e',  'w',  'r', 'R', 'A', 'I', 'n', 'L', 'S'};

QString AsciiUpper(QString s) {
    for (QChar& c : s)
        if (c >= u'a' && c <= u'z')
            c = QChar(c.unicode() - 32);
    return s;
}

// The installation as seen from above: every file and directory below the host directory of
// C:, by upper-cased path relative to it.
struct Tree {
    QMap<QString, QByteArray> files;
    QSet<QString> directories;

    static Tree Of(const QString& hostRoot) {
        Tree t;
        QDirIterator it(hostRoot, QDir::Files | QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            const QString key = AsciiUpper(path.mid(hostRoot.size() + 1));
            if (it.fileInfo().isDir()) {
                t.directories.insert(key);
            } else {
                QFile f(path);
                KESTROVA_FUZZ_CHECK(f.open(QIODevice::ReadOnly));
                t.files.insert(key, f.readAll());
            }
        }
        return t;
    }
};

// A system path on C: as a key of the tree.
QString Key(const QString& systemPath) {
    QString rest = systemPath.mid(3);
    if (rest.endsWith(u'\\'))
        rest.chop(1);
    return AsciiUpper(rest.replace(u'\\', u'/'));
}

// Lines as the line reader splits them: at CR LF, LF or CR.
QList<QByteArray> Lines(const QByteArray& text) {
    QList<QByteArray> lines;
    qsizetype start = 0;
    qsizetype i = 0;
    while (i < text.size()) {
        const char c = text.at(i);
        if (c == '\r' || c == '\n') {
            lines << text.mid(start, i - start);
            i += (c == '\r' && i + 1 < text.size() && text.at(i + 1) == '\n') ? 2 : 1;
            start = i;
        } else {
            ++i;
        }
    }
    if (start < text.size())
        lines << text.mid(start);
    return lines;
}

// The filing rules, told once more in the plainest way.
class Model {
public:
    Model(const GlobalSettings& g, Tree tree, QString trailer, QList<QChar> filter)
        : tree(std::move(tree)), m_g(g), m_trailer(std::move(trailer)), m_filter(std::move(filter)) {}

    void Take(const QByteArray& chunk) {
        if (!m_receiving) {
            m_temp.clear();
            m_receiving = true;
        }
        for (qsizetype i = 0; i < chunk.size(); ++i) {
            const QChar c = ScreenCharOf(uchar(chunk.at(i)));
            m_match += c;
            if (m_match != m_trailer.left(m_match.size()))
                m_match.clear();
            if (!m_trailer.isEmpty() && m_match == m_trailer) {
                m_receiving = false;
                File();
                if (i + 1 < chunk.size()) {
                    m_temp.clear();
                    m_receiving = true;
                }
            }
            if (m_receiving && !m_filter.contains(c))
                m_temp += chunk.at(i);
        }
    }

    Tree tree;
    int filed = 0;

private:
    bool Exists(const QString& systemPath) const {
        const QString key = Key(systemPath);
        return tree.files.contains(key) || tree.directories.contains(key);
    }

    void File() {
        if (m_temp.size() < 2)
            return;
        const QList<QByteArray> lines = Lines(m_temp);
        ReceivedHeader header;
        for (int index = 0; index < 3 && index < lines.size(); ++index)
            header.TakeLine(index, TrimBlanks(FromBytes(lines.at(index))));

        QString machine = header.Machine.isEmpty() ? m_g.MachineDir : header.Machine;
        QString description;
        bool known = false;
        for (int n = 1; n <= m_g.MachineCount; ++n) {
            if (AsciiUpper(TrimBlanks(m_g.MachineTable.at(n).field2)) == AsciiUpper(machine)) {
                machine = TrimBlanks(m_g.MachineTable.at(n).field2);
                description = TrimBlanks(m_g.MachineTable.at(n).field1);
                known = true;
                break;
            }
        }
        if (!known) {
            machine = m_g.MachineDir;
            description = m_g.MachineDescription;
        }
        const QString directory = header.Directory.isEmpty() ? m_g.CurrentDir : header.Directory;
        const QString path = m_g.RootPath + machine + u'\\' + directory + u'\\';
        tree.directories.insert(Key(path));
        QString program = header.Program;
        for (int n = 1; program.isEmpty(); ++n)
            if (!Exists(path + QStringLiteral("New Program %1.prg").arg(n)))
                program = QStringLiteral("New Program %1").arg(n);

        QByteArray text = m_temp;
        if (header.Found) {
            text.clear();
            for (const QByteArray& line : lines) {
                const QString trimmed = TrimBlanks(FromBytes(line));
                if (!trimmed.isEmpty() && !trimmed.contains(QChar(23)) && !trimmed.contains(QChar(24)) &&
                    !trimmed.contains(QChar(25)))
                    text += ToBytes(trimmed) + "\r\n";
            }
        }
        tree.files.insert(Key(path + program + QStringLiteral(".prg")), text);

        const QString list = Key(m_g.SystemPath + QStringLiteral("Receive.lst"));
        QString entry = program + QStringLiteral(" in ") + directory;
        if (m_g.MachineCount >= 2)
            entry += QStringLiteral(" for ") + description;
        if (tree.files.value(list).size() < 4)
            tree.files.remove(list);
        tree.files[list] += ToBytes(entry) + "\r\n";
        ++filed;
    }

    const GlobalSettings& m_g;
    QString m_trailer;
    QList<QChar> m_filter;
    bool m_receiving = false;
    QString m_match;
    QByteArray m_temp;
};

void CopyTree(const QString& from, const QString& to) {
    QDir().mkpath(to);
    QDirIterator it(from, QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QString target = to + path.mid(from.size());
        if (it.fileInfo().isDir())
            QDir().mkpath(target);
        else
            KESTROVA_FUZZ_CHECK(QFile::copy(path, target));
    }
}

// One installation for the whole run; its machines' directories are put back before each input.
struct Installation {
    testing::InstallationFixture fx;
    QString jobs;
    QString pristine;
    QStringList cms;
    Installation() {
        fx.Load();
        cms = fx.ReadLines(QStringLiteral("C:\\Kestrova\\Kestrova.cms"));
        KESTROVA_FUZZ_CHECK(cms.size() >= 15);
        jobs = fx.Host(QStringLiteral("C:\\Jobs"));
        pristine = fx.Root() + QStringLiteral("/pristine-jobs");
        CopyTree(jobs, pristine);
    }
    void Reset() {
        KESTROVA_FUZZ_CHECK(QDir(jobs).removeRecursively());
        CopyTree(pristine, jobs);
        fx.Remove(QStringLiteral("C:\\Kestrova\\Receive.lst"));
        fx.Remove(QStringLiteral("C:\\Kestrova\\Receive.tmp"));
        fx.Messages().Clear();
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 4)
        return 0;
    fuzz::EnsureApplication();
    static Installation installation;
    testing::InstallationFixture& fx = installation.fx;
    installation.Reset();

    const QString trailer = QLatin1String(Trailers[data[0] % std::size(Trailers)]);
    const QString endSequence =
        QLatin1String(EndSequences[(data[0] / std::size(Trailers)) % std::size(EndSequences)]);
    const QString filter = QLatin1String(Filters[data[1] % std::size(Filters)]);
    const int chunkSize = data[2] % 17;
    QByteArray stream = fuzz::Bytes(data + 4, size - 4);
    if (data[3] % 2 == 1)
        for (char& c : stream)
            c = Alphabet[uchar(c) % std::size(Alphabet)];
    // The installation's own "Kestrova.cms", on port 2, with this input's trailer and filter.
    QStringList cms = installation.cms;
    cms[1] = LabelledLine("Port", "2");
    cms[11] = LabelledLine("Trailer", trailer);
    cms[12] = LabelledLine("End Sequence", endSequence);
    cms[14] = LabelledLine("Receive Filter", filter);
    fx.WriteLines(QStringLiteral("C:\\Kestrova\\Kestrova.cms"), cms);

    auto owned = std::make_unique<testing::ScriptedSerialLine>();
    testing::ScriptedSerialLine& line = *owned;
    BackgroundReceive receive(fx.session(), std::move(owned));
    receive.Start();
    KESTROVA_FUZZ_CHECK(line.PortOpen());
    int filed = 0;
    QObject::connect(&receive, &BackgroundReceive::ProgramFiled, [&filed](const QString&) { ++filed; });

    const QString root = fx.Host(QStringLiteral("C:\\"));
    Model model(fx.Settings(), Tree::Of(root), receive.Settings().Trailer, receive.Settings().ReceiveFilter);
    for (qsizetype at = 0; at < stream.size();) {
        const qsizetype n = chunkSize == 0 ? stream.size() : chunkSize;
        const QByteArray piece = stream.mid(at, n);
        at += n;
        line.Feed(piece);
        // The line drops NULs (NullDiscard); a piece of nothing else raises no event.
        QByteArray arrived = piece;
        arrived.removeIf([](char c) { return c == '\0'; });
        if (!arrived.isEmpty())
            model.Take(arrived);
    }
    receive.Stop();

    KESTROVA_FUZZ_CHECK(fx.Messages().Texts().isEmpty());
    KESTROVA_FUZZ_CHECK(filed == model.filed);
    Tree after = Tree::Of(root);
    // The transfer log tells what came on the line; it is no filed program.
    after.files.remove(QStringLiteral("KESTROVA/TRANSFER.LOG"));
    model.tree.files.remove(QStringLiteral("KESTROVA/TRANSFER.LOG"));
    for (auto it = after.files.constBegin(); it != after.files.constEnd(); ++it) {
        if (model.tree.files.value(it.key()) != it.value())
            std::fprintf(stderr, "unexpected: %s\n", qPrintable(it.key()));
    }
    for (auto it = model.tree.files.constBegin(); it != model.tree.files.constEnd(); ++it) {
        if (!after.files.contains(it.key()))
            std::fprintf(stderr, "missing: %s\n", qPrintable(it.key()));
    }
    KESTROVA_FUZZ_CHECK(after.files == model.tree.files);
    KESTROVA_FUZZ_CHECK(after.directories == model.tree.directories);
    return 0;
}
