#include "TempLeftovers.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <sys/stat.h>
#include <unistd.h>

void forEachTempLeftover(QChar separator, bool directories, const std::function<void(const QString& path)>& found)
{
    const QRegularExpression name(QRegularExpression::anchoredPattern(
        QRegularExpression::escape(QCoreApplication::applicationName()) + QRegularExpression::escape(QString(separator))
        + QStringLiteral("[A-Za-z0-9]{6}")));
    const QDir temp(QDir::tempPath());
    const QDir::Filters type = directories ? QDir::Dirs | QDir::NoDotAndDotDot : QDir::Files;
    for (const QString& entry : temp.entryList(type | QDir::Hidden | QDir::System)) {
        const QString path = temp.filePath(entry);
        struct stat info
        { };
        if (name.match(entry).hasMatch() && ::lstat(QFile::encodeName(path).constData(), &info) == 0
            && (directories ? S_ISDIR(info.st_mode) : S_ISREG(info.st_mode)) && info.st_uid == ::getuid())
            found(path);
    }
}
