#pragma once

#include <QAbstractItemModel>
#include <QStringList>
#include <QVector>

#include "ServerInfo.h"

// Builds server lists from short entries: "name:type:ping" with an optional trailing "*" for a
// favourite, e.g. "DE-Berlin:1:30*". The login is "vpn1" unless given as "login/name:...".
inline ServerInfo serverFromText(const QString& entry)
{
    QString text = entry;
    ServerInfo server;
    if (text.endsWith(QLatin1Char('*'))) {
        server.favorite = true;
        text.chop(1);
    }
    const QStringList parts = text.split(QLatin1Char(':'));
    QString name = parts.value(0);
    server.user = QStringLiteral("vpn1");
    if (name.contains(QLatin1Char('/'))) {
        server.user = name.section(QLatin1Char('/'), 0, 0);
        name = name.section(QLatin1Char('/'), 1);
    }
    server.name = name;
    server.title = name;
    server.flag = name.left(2).toLower();
    server.ip = QStringLiteral("127.0.0.1");
    server.type = ServerInfo::ServerType(parts.value(1, QStringLiteral("1")).toInt());
    server.ping = parts.value(2, QStringLiteral("0")).toInt();
    server.protocol = OpenVpnUdp;
    return server;
}

inline QVector<ServerInfo> serversFromText(const QStringList& entries)
{
    QVector<ServerInfo> list;
    for (const QString& entry : entries)
        list.append(serverFromText(entry));
    return list;
}

// The display texts of a model's rows, children in brackets: "DE[DE-Berlin,DE-Paris],FR[]".
inline QString outline(const QAbstractItemModel& model, const QModelIndex& parent = QModelIndex())
{
    QStringList rows;
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        QString text = index.data().toString();
        if (model.hasChildren(index))
            text += QLatin1Char('[') + outline(model, index) + QLatin1Char(']');
        rows.append(text);
    }
    return rows.join(QLatin1Char(','));
}
