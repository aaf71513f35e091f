#pragma once

#include <QAbstractItemModel>
#include <QAbstractItemModelTester>
#include <QStringList>
#include <QVector>

#include "ServerInfo.h"

// Builds a server list from blank-separated entries "[login/]name:type:ping[*]", "*" marking a
// favourite, e.g. "DE-Berlin:1:30* FR-Paris:2"; the login is "vpn1" unless given. Each server has
// ports for every protocol.
inline QVector<ServerInfo> serversFromText(const QString& entries)
{
    QVector<ServerInfo> list;
    for (QString text : entries.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        ServerInfo server;
        server.favorite = text.endsWith(QLatin1Char('*'));
        const QStringList parts = text.remove(QLatin1Char('*')).split(QLatin1Char(':'));
        const QString name = parts.value(0).section(QLatin1Char('/'), -1);
        server.user = parts.value(0).contains(QLatin1Char('/')) ? parts.value(0).section(QLatin1Char('/'), 0, 0)
                                                                : QStringLiteral("vpn1");
        server.name = server.title = name;
        server.flag = name.left(2).toLower();
        server.ip = QStringLiteral("127.0.0.1");
        server.type = ServerInfo::ServerType(parts.value(1, QStringLiteral("1")).toInt());
        server.ping = parts.value(2).toInt();
        server.protocol = OpenVpnUdp;
        server.tcpPorts = QStringList {QStringLiteral("80")};
        server.udpPorts = QStringList {QStringLiteral("1194")};
        server.sslPort = 443;
        list.append(server);
    }
    return list;
}

// The display texts of a model's rows, children in brackets: "DE[DE-Berlin,DE-Paris],FR[]".
inline QString outline(const QAbstractItemModel& model, const QModelIndex& parent = QModelIndex())
{
    QStringList rows;
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        rows.append(index.data().toString());
        if (model.hasChildren(index))
            rows.last() += QLatin1Char('[') + outline(model, index) + QLatin1Char(']');
    }
    return rows.join(QLatin1Char(','));
}

// A model under its sorting proxy, both watched by model testers.
template <class Model, class Proxy>
struct SortedModel
{
    SortedModel(const QString& entries = {})
    {
        proxy.setSourceModel(&model);
        proxy.sort(0);
        model.setServers(serversFromText(entries));
    }
    Model model;
    Proxy proxy;
    QAbstractItemModelTester modelTester {&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
    QAbstractItemModelTester proxyTester {&proxy, QAbstractItemModelTester::FailureReportingMode::Fatal};
};
