#include "TempLeftovers.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

void forEachTempLeftover(QChar separator, bool directories, const std::function<void(const QString& path)>& found)
{
    const QString prefix = QCoreApplication::applicationName() + separator;
    const QRegularExpression name(
        QRegularExpression::anchoredPattern(QRegularExpression::escape(prefix) + QStringLiteral("[A-Za-z0-9]{6}")));
    // Read with readdir and a plain prefix test: this runs before the window is shown, and a busy temporary
    // directory costs Qt's directory listing a file-information look-up for every entry.
    const QByteArray temp = QFile::encodeName(QDir::tempPath());
    const QByteArray start = QFile::encodeName(prefix);
    DIR* dir = ::opendir(temp.constData());
    if (!dir)
        return;
    QStringList paths;
    while (const dirent* entry = ::readdir(dir)) {
        const QByteArray entryName(entry->d_name);
        if (!entryName.startsWith(start) || !name.match(QFile::decodeName(entryName)).hasMatch())
            continue;
        const QByteArray path = temp + '/' + entryName;
        struct stat info
        { };
        if (::lstat(path.constData(), &info) == 0 && (directories ? S_ISDIR(info.st_mode) : S_ISREG(info.st_mode))
            && info.st_uid == ::getuid())
            paths << QFile::decodeName(path);
    }
    ::closedir(dir);
    for (const QString& path : qAsConst(paths))
        found(path);
}
