#include "StyleChoice.h"

QString chooseStyleName(const QStringList& keys)
{
    QString style;
    bool hasFusion = false;
    for (const QString& key : keys) {
        if (key.contains(QLatin1String("gtk"), Qt::CaseInsensitive))
            style = key;
        if (key == QLatin1String("Fusion"))
            hasFusion = true;
    }
    if (style.isEmpty() && hasFusion)
        style = QStringLiteral("Fusion");
    return style;
}
