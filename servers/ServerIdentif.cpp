#include "ServerIdentif.h"

#include <QStringList>

QString identifToSettings(const ServerIdentif& id)
{
    return QStringLiteral("%1::%2").arg(id.first, id.second);
}

ServerIdentif identifFromSettings(const QString& text)
{
    const QStringList parts = text.split(QStringLiteral("::"), Qt::KeepEmptyParts);
    if (parts.size() < 2)
        return ServerIdentif();
    return ServerIdentif(parts[0], parts[1]);
}
