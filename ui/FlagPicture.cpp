#include "FlagPicture.h"

#include <QFile>
#include <QIcon>
#include <QPixmapCache>

namespace {

const QString PlaceholderPath = QStringLiteral(":/resources/flag-placeholder.svg");

QString flagPath(const QString& code)
{
    return QStringLiteral(":/resources/flags/%1.png").arg(code.trimmed().toLower());
}

} // namespace

bool FlagPicture::exists(const QString& code)
{
    return !code.trimmed().isEmpty() && QFile::exists(flagPath(code));
}

QString FlagPicture::resourcePath(const QString& code)
{
    return exists(code) ? flagPath(code) : PlaceholderPath;
}

QPixmap FlagPicture::pixmap(const QString& code)
{
    const QString path = resourcePath(code);
    QPixmap picture;
    if (QPixmapCache::find(path, &picture))
        return picture;
    if (path == PlaceholderPath)
        picture = QIcon(path).pixmap(QSize(Width, Height));
    else
        picture.load(path);
    QPixmapCache::insert(path, picture);
    return picture;
}
