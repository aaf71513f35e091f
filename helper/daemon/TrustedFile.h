#pragma once

#include <QByteArray>
#include <QString>

// Opens a file named by a caller for the daemon's use. It must be a regular file owned by the
// caller (root's files only when root asks) and writable by nobody else, reached from "/"
// through real directories only: no component of the path may be a symbolic link. Its size is
// checked before a byte is read. The daemon then works on a copy of its own, so the file cannot
// be swapped between the check and the use.
class TrustedFile
{
public:
    TrustedFile(const QString& path, qint64 callerUid);

    // Reads the whole file (at most maxSize bytes) into data; false with error() otherwise.
    bool read(qint64 maxSize, QByteArray& data);
    // Copies the file to target (created with mode 0600); false with error() otherwise.
    bool copyTo(const QString& target, qint64 maxSize);

    QString error() const { return m_error; }

    // Creates path for writing with mode 0600 from the start (replacing a file of that name, never
    // following a link); the descriptor, or -1.
    static int createPrivate(const QString& path);

private:
    int openChecked(qint64 maxSize);

    QString m_path;
    qint64 m_callerUid;
    QString m_error;
};
