#pragma once

#include <QByteArray>
#include <QString>

// Opens a file named by a caller for the daemon's use: it must be a regular file (not a link),
// owned by the caller or by root and writable by nobody else. The daemon then works on a copy
// of its own, so the file cannot be swapped between the check and the use.
class TrustedFile
{
public:
    TrustedFile(const QString& path, qint64 callerUid);

    // Reads the whole file (at most maxSize bytes) into data; false with error() otherwise.
    bool read(qint64 maxSize, QByteArray& data);
    // Copies the file to target (created with mode 0600); false with error() otherwise.
    bool copyTo(const QString& target, qint64 maxSize);

    QString error() const { return m_error; }

private:
    int openChecked();

    QString m_path;
    qint64 m_callerUid;
    QString m_error;
};
