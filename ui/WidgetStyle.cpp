#include "WidgetStyle.h"

#include <QDebug>
#include <QFile>

namespace WidgetStyle {

QString sheet()
{
    static const QString cached = [] {
        QFile file(QStringLiteral(":/resources/style/widgets.qss"));
        if (!file.open(QIODevice::ReadOnly)) {
            qDebug() << "Widget style sheet missing from the resources";
            return QString();
        }
        return QString::fromUtf8(file.readAll());
    }();
    return cached;
}

} // namespace WidgetStyle
