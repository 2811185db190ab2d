#include "platform/PdfReader.h"

#include <QDir>
#include <QFileInfo>

namespace kestrova {

#ifdef _WIN32

QString FindPdfReader(const FileSystem& files, const QStringList&) {
    const QString adobe = QStringLiteral("C:\\Program Files\\Adobe\\");
    for (const QString& dir : files.List(adobe, QStringLiteral("*"), EntryKinds::Directories)) {
        const QString upper = dir.toUpper();
        if (!upper.contains(QLatin1String("ACROBAT")) && !upper.contains(QLatin1String("READER")))
            continue;
        for (const QString& sub : {QString(), QStringLiteral("Reader\\"), QStringLiteral("Acrobat\\")})
            for (const QString& exe : {QStringLiteral("ACROBAT.EXE"), QStringLiteral("ACRORD32.EXE")})
                if (files.IsFile(adobe + dir + u'\\' + sub + exe))
                    return files.FullPath(adobe + dir + u'\\' + sub + exe);
    }
    return {};
}

#else

QString FindPdfReader(const FileSystem& files, const QStringList& searchDirs) {
    static const char* const viewers[] = {"evince",  "okular", "atril", "xreader",  "qpdfview",
                                          "zathura", "mupdf",  "xpdf",  "epdfview", "xdg-open"};
    const QStringList dirs = searchDirs.isEmpty()
                                 ? QString::fromLocal8Bit(qgetenv("PATH")).split(u':', Qt::SkipEmptyParts)
                                 : searchDirs;
    for (const char* viewer : viewers) {
        for (const QString& dir : dirs) {
            const QFileInfo candidate(QDir(dir).filePath(QLatin1String(viewer)));
            if (candidate.isFile() && candidate.isExecutable())
                return files.SystemPathOfHost(candidate.absoluteFilePath());
        }
    }
    return {};
}

#endif

} // namespace kestrova
