#include "WidgetStyle.h"

#include <QDebug>
#include <QFile>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPushButton>

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

void setUpPage(QWidget* page, const QString& objectName)
{
    page->setObjectName(objectName);
    page->setAttribute(Qt::WA_StyledBackground);
    page->setStyleSheet(sheet());
    page->setMinimumSize(340, 500);
}

void setUpBackButton(QPushButton* button)
{
    button->setObjectName(QStringLiteral("pbBack"));
    button->setIcon(QIcon(QStringLiteral(":/resources/back.svg")));
    button->setIconSize(QSize(18, 18));
    button->setCursor(Qt::PointingHandCursor);
}

QHBoxLayout* topRow(QWidget* left, QLabel* title, QWidget* right)
{
    title->setObjectName(QStringLiteral("lbTitle"));
    title->setAlignment(Qt::AlignCenter);
    auto* row = new QHBoxLayout;
    row->setContentsMargins(8, 8, 8, 4);
    if (left)
        row->addWidget(left);
    else
        row->addSpacing(right->sizeHint().width());
    row->addWidget(title, 1);
    if (right)
        row->addWidget(right);
    else
        row->addSpacing(left->sizeHint().width());
    return row;
}

} // namespace WidgetStyle
