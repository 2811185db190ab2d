#include "platform/Errors.h"

namespace kestrova {

namespace {

QString ComposeText(SystemError::Kind kind, const QString& subject, const QString& detail) {
    QString text = SystemError::ReasonText(kind);
    if (!subject.isEmpty())
        text += QStringLiteral(": \"%1\"").arg(subject);
    if (!detail.isEmpty())
        text += QStringLiteral(" (%1)").arg(detail);
    return text;
}

} // namespace

SystemError::SystemError(Kind kind, const QString& subject, const QString& detail)
    : std::runtime_error(ComposeText(kind, subject, detail).toStdString()), m_kind(kind), m_subject(subject),
      m_detail(detail), m_text(ComposeText(kind, subject, detail)) {}

QString SystemError::reason() const {
    return ReasonText(m_kind);
}

QString SystemError::ReasonText(Kind kind) {
    switch (kind) {
    case Kind::FileNotFound:
        return QStringLiteral("File not found");
    case Kind::PathNotFound:
        return QStringLiteral("Path not found");
    case Kind::PermissionDenied:
        return QStringLiteral("Permission denied");
    case Kind::DiskFull:
        return QStringLiteral("Disk full");
    case Kind::InputPastEnd:
        return QStringLiteral("Input past end of file");
    case Kind::FileAlreadyExists:
        return QStringLiteral("File already exists");
    case Kind::PathFileAccess:
        return QStringLiteral("Path/File access error");
    case Kind::DiskNotReady:
        return QStringLiteral("Disk not ready");
    case Kind::DeviceUnavailable:
        return QStringLiteral("Device unavailable");
    case Kind::DeviceIo:
        return QStringLiteral("Device I/O error");
    case Kind::BadFileName:
        return QStringLiteral("Bad file name");
    case Kind::Overflow:
        return QStringLiteral("Overflow");
    }
    return QStringLiteral("Error");
}

void ThrowSystemError(SystemError::Kind kind, const QString& subject, const QString& detail) {
    switch (kind) {
    case SystemError::Kind::FileNotFound:
        throw FileNotFoundError(subject, detail);
    case SystemError::Kind::PathNotFound:
        throw PathNotFoundError(subject, detail);
    case SystemError::Kind::PermissionDenied:
        throw PermissionDeniedError(subject, detail);
    case SystemError::Kind::DiskFull:
        throw DiskFullError(subject, detail);
    case SystemError::Kind::InputPastEnd:
        throw InputPastEndError(subject, detail);
    case SystemError::Kind::FileAlreadyExists:
        throw FileAlreadyExistsError(subject, detail);
    case SystemError::Kind::PathFileAccess:
        throw PathFileAccessError(subject, detail);
    case SystemError::Kind::DiskNotReady:
        throw DiskNotReadyError(subject, detail);
    case SystemError::Kind::DeviceUnavailable:
        throw DeviceUnavailableError(subject, detail);
    case SystemError::Kind::DeviceIo:
        throw DeviceIoError(subject, detail);
    case SystemError::Kind::BadFileName:
        throw BadFileNameError(subject, detail);
    case SystemError::Kind::Overflow:
        throw OverflowError(subject, detail);
    }
    throw SystemError(kind, subject, detail);
}

} // namespace kestrova
