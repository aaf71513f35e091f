#include "TrustedFile.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

TrustedFile::TrustedFile(const QString& path, qint64 callerUid)
    : m_path(path)
    , m_callerUid(callerUid)
{ }

int TrustedFile::openChecked()
{
    const QByteArray native = QFile::encodeName(m_path);
    // Look before opening: merely opening some device nodes has effects.
    struct stat before;
    if (::lstat(native.constData(), &before) != 0 || !S_ISREG(before.st_mode)) {
        m_error = QStringLiteral("%1: missing or not a regular file").arg(m_path);
        return -1;
    }
    const int fd = ::open(native.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (fd < 0) {
        m_error = QStringLiteral("cannot open %1: %2").arg(m_path, QString::fromLocal8Bit(std::strerror(errno)));
        return -1;
    }
    struct stat st;
    QString why;
    if (::fstat(fd, &st) != 0)
        why = QStringLiteral("cannot stat");
    else if (!S_ISREG(st.st_mode) || st.st_ino != before.st_ino || st.st_dev != before.st_dev)
        why = QStringLiteral("not a regular file");
    else if (st.st_uid != 0 && qint64(st.st_uid) != m_callerUid)
        why = QStringLiteral("owned by uid %1, not by the caller (%2) or root").arg(st.st_uid).arg(m_callerUid);
    else if (st.st_mode & (S_IWGRP | S_IWOTH))
        why = QStringLiteral("writable by others");
    if (!why.isEmpty()) {
        ::close(fd);
        m_error = QStringLiteral("%1: %2").arg(m_path, why);
        return -1;
    }
    return fd;
}

bool TrustedFile::read(qint64 maxSize, QByteArray& data)
{
    const int fd = openChecked();
    if (fd < 0)
        return false;
    QFile file;
    if (!file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        m_error = QStringLiteral("cannot read %1").arg(m_path);
        return false;
    }
    data = file.read(maxSize + 1);
    if (data.size() > maxSize) {
        m_error = QStringLiteral("%1 is larger than %2 bytes").arg(m_path).arg(maxSize);
        return false;
    }
    return true;
}

bool TrustedFile::copyTo(const QString& target, qint64 maxSize)
{
    const int fd = openChecked();
    if (fd < 0)
        return false;
    QFile source;
    if (!source.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        m_error = QStringLiteral("cannot read %1").arg(m_path);
        return false;
    }
    QFile::remove(target);
    QFile out(target);
    if (!out.open(QIODevice::WriteOnly | QIODevice::NewOnly)
        || !out.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner)) {
        m_error = QStringLiteral("cannot create %1").arg(target);
        return false;
    }
    qint64 total = 0;
    while (!source.atEnd()) {
        const QByteArray chunk = source.read(1 << 20);
        if (chunk.isEmpty())
            break;
        total += chunk.size();
        if (total > maxSize || out.write(chunk) != chunk.size()) {
            out.remove();
            m_error = QStringLiteral("cannot copy %1 (too large or disk full)").arg(m_path);
            return false;
        }
    }
    out.close();
    return true;
}
