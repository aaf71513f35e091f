#pragma once

#include <QPixmap>
#include <QString>

// Country flag pictures by two-letter code. A code without a flag gets a neutral placeholder,
// so a row never shows a broken image.
class FlagPicture
{
public:
    static constexpr int Width = 16;
    static constexpr int Height = 11;

    static QString resourcePath(const QString& code);
    static bool exists(const QString& code);
    static QPixmap pixmap(const QString& code);
};
