#include "AbstractServerModel.h"

#include <QDebug>

const QString& AbstractServerModel::noName()
{
    static const QString empty;
    return empty;
}

void AbstractServerModel::logFavoriteChange(const QModelIndex& index,
                                            const ServerInfo& server,
                                            bool oldMark,
                                            bool newMark)
{
    const auto text = [](bool mark) {
        return mark ? "true" : "false";
    };
    qDebug() << "favorite changed" << index << server.description() << text(oldMark) << text(newMark);
}

QVariant AbstractServerModel::headerData(int, Qt::Orientation, int) const
{
    return QVariant();
}
