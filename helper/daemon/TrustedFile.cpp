#include "TrustedFile.h"

#include <QFile>
#include <QStringList>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class Descriptor
{
public:
    explicit Descriptor(int fd = -1)
        : m_fd(fd)
    { }
    ~Descriptor()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    void reset(int fd)
    {
        if (m_fd >= 0)
            ::close(m_fd);
        m_fd = fd;
    }
    int get() const { return m_fd; }
    int release()
    {
        const int fd = m_fd;
        m_fd = -1;
        return fd;
    }

private:
    int m_fd;
};

QString systemError()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

} // namespace

TrustedFile::TrustedFile(const QString& path, qint64 callerUid)
    : m_path(path)
    , m_callerUid(callerUid)
{ }

int TrustedFile::openChecked(qint64 maxSize)
{
    const QStringList parts = m_path.split(QLatin1Char('/'));
    if (!m_path.startsWith(QLatin1Char('/')) || parts.size() < 2 || parts.contains(QStringLiteral(".."))
        || parts.contains(QStringLiteral(".")) || parts.last().isEmpty() || m_path.contains(QLatin1Char('\0'))) {
        m_error = QStringLiteral("%1: not an absolute path to a file").arg(m_path);
        return -1;
    }
    // Walk from "/" one directory at a time without following links, so that what is checked
    // at the end is what the path names now, whatever anyone swaps meanwhile.
    Descriptor dir(::open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
    for (int i = 1; i + 1 < parts.size(); ++i) {
        if (parts.at(i).isEmpty())
            continue;
        const QByteArray name = QFile::encodeName(parts.at(i));
        const int next = ::openat(dir.get(), name.constData(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (next < 0) {
            m_error
                = QStringLiteral("%1: directory \"%2\" is a link, missing or not a directory").arg(m_path, parts.at(i));
            return -1;
        }
        dir.reset(next);
    }
    const QByteArray leaf = QFile::encodeName(parts.last());
    // Look before opening: merely opening some device nodes has effects.
    struct stat before;
    if (::fstatat(dir.get(), leaf.constData(), &before, AT_SYMLINK_NOFOLLOW) != 0 || !S_ISREG(before.st_mode)) {
        m_error = QStringLiteral("%1: missing or not a regular file").arg(m_path);
        return -1;
    }
    Descriptor fd(::openat(dir.get(), leaf.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (fd.get() < 0) {
        m_error = QStringLiteral("cannot open %1: %2").arg(m_path, systemError());
        return -1;
    }
    struct stat st;
    QString why;
    if (::fstat(fd.get(), &st) != 0)
        why = QStringLiteral("cannot stat");
    else if (!S_ISREG(st.st_mode) || st.st_ino != before.st_ino || st.st_dev != before.st_dev)
        why = QStringLiteral("not a regular file");
    else if (qint64(st.st_uid) != m_callerUid)
        why = QStringLiteral("owned by uid %1, not by the caller (%2)").arg(st.st_uid).arg(m_callerUid);
    else if (st.st_mode & (S_IWGRP | S_IWOTH))
        why = QStringLiteral("writable by others");
    else if (st.st_size > maxSize)
        why = QStringLiteral("%1 bytes, more than %2").arg(qint64(st.st_size)).arg(maxSize);
    if (!why.isEmpty()) {
        m_error = QStringLiteral("%1: %2").arg(m_path, why);
        return -1;
    }
    return fd.release();
}

bool TrustedFile::read(qint64 maxSize, QByteArray& data)
{
    const int fd = openChecked(maxSize);
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

int TrustedFile::createPrivate(const QString& path)
{
    const QByteArray native = QFile::encodeName(path);
    ::unlink(native.constData());
    return ::open(native.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
}

bool TrustedFile::copyTo(const QString& target, qint64 maxSize)
{
    const int fd = openChecked(maxSize);
    if (fd < 0)
        return false;
    QFile source;
    if (!source.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        m_error = QStringLiteral("cannot read %1").arg(m_path);
        return false;
    }
    const int outFd = createPrivate(target);
    QFile out;
    if (outFd < 0 || !out.open(outFd, QIODevice::WriteOnly, QFileDevice::AutoCloseHandle)) {
        if (outFd >= 0)
            ::close(outFd);
        m_error = QStringLiteral("cannot create %1").arg(target);
        return false;
    }
    qint64 total = 0;
    while (!source.atEnd()) {
        const QByteArray chunk = source.read(1 << 20);
        if (chunk.isEmpty())
            break;
        total += chunk.size();
        // The file may grow while it is copied: the limit holds for what is read, too.
        if (total > maxSize || out.write(chunk) != chunk.size()) {
            out.close();
            QFile::remove(target);
            m_error = QStringLiteral("cannot copy %1 (too large or disk full)").arg(m_path);
            return false;
        }
    }
    out.close();
    return true;
}
