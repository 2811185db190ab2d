#pragma once

#include <QString>
#include <stdexcept>

namespace kestrova {

// The run-time errors the system meets on files, devices and numbers. Each one carries the
// system's own path (or port) it concerns, so that the message shown at the edge of an event
// handler says which file failed and why.
class SystemError : public std::runtime_error {
public:
    enum class Kind {
        FileNotFound,      // "File not found"
        PathNotFound,      // "Path not found"
        PermissionDenied,  // "Permission denied"
        DiskFull,          // "Disk full"
        InputPastEnd,      // "Input past end of file"
        FileAlreadyExists, // "File already exists"
        PathFileAccess,    // "Path/File access error"
        DiskNotReady,      // "Disk not ready"
        DeviceUnavailable, // "Device unavailable"
        DeviceIo,          // "Device I/O error"
        BadFileName,       // "Bad file name"
        Overflow,          // "Overflow"
    };

    SystemError(Kind kind, const QString& subject, const QString& detail = {});

    [[nodiscard]] Kind kind() const noexcept { return m_kind; }
    // The file, directory or port the error concerns, in the system's own notation.
    [[nodiscard]] const QString& subject() const noexcept { return m_subject; }
    // The reason alone ("File not found").
    [[nodiscard]] QString reason() const;
    // What the reason is about beyond the subject ("the number \"1e10\""); may be empty.
    [[nodiscard]] const QString& detail() const noexcept { return m_detail; }
    // The whole text: reason, then the subject in double quotes, then any detail.
    [[nodiscard]] QString text() const { return m_text; }

    [[nodiscard]] static QString ReasonText(Kind kind);

private:
    Kind m_kind;
    QString m_subject;
    QString m_detail;
    QString m_text;
};

// Typed errors, so that a caller can catch exactly the case it handles.
template <SystemError::Kind K>
class SystemErrorOf : public SystemError {
public:
    explicit SystemErrorOf(const QString& subject, const QString& detail = {})
        : SystemError(K, subject, detail) {}
};

using FileNotFoundError = SystemErrorOf<SystemError::Kind::FileNotFound>;
using PathNotFoundError = SystemErrorOf<SystemError::Kind::PathNotFound>;
using PermissionDeniedError = SystemErrorOf<SystemError::Kind::PermissionDenied>;
using DiskFullError = SystemErrorOf<SystemError::Kind::DiskFull>;
using InputPastEndError = SystemErrorOf<SystemError::Kind::InputPastEnd>;
using FileAlreadyExistsError = SystemErrorOf<SystemError::Kind::FileAlreadyExists>;
using PathFileAccessError = SystemErrorOf<SystemError::Kind::PathFileAccess>;
using DiskNotReadyError = SystemErrorOf<SystemError::Kind::DiskNotReady>;
using DeviceUnavailableError = SystemErrorOf<SystemError::Kind::DeviceUnavailable>;
using DeviceIoError = SystemErrorOf<SystemError::Kind::DeviceIo>;
using BadFileNameError = SystemErrorOf<SystemError::Kind::BadFileName>;
using OverflowError = SystemErrorOf<SystemError::Kind::Overflow>;

// Throws the typed error for a kind known only at run time.
[[noreturn]] void ThrowSystemError(SystemError::Kind kind, const QString& subject,
                                   const QString& detail = {});

} // namespace kestrova
