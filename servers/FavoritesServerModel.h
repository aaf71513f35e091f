#pragma once

#include <QVector>

#include "AbstractServerModel.h"

// The short list of the connect page: the favourites under a "<*>" header, then under a "<=>"
// header the three lowest-latency standard and the three lowest-latency double-hop servers.
class FavoritesServerModel : public AbstractServerModel
{
    Q_OBJECT

public:
    static const QString favoriteHeaderName;
    static const QString recommendedHeaderName;

    using AbstractServerModel::AbstractServerModel;

    void setServers(QVector<ServerInfo> servers);
    ServerInfo locationByIndex(const QModelIndex& index) const override;
    const QString& sortText(const QModelIndex& index) const override;
    // Every row marked favourite, in row order; the "<*>" header is one of them when present.
    QVector<ServerInfo> getFavoriteLocation() const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    // Column 1 only: sets the favourite mark of the row.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

protected:
    // These append rows and are called only inside the reset of setServers.
    void appendFavoriteServers(const QVector<ServerInfo>& servers);
    void appendBestStandartServers(const QVector<ServerInfo>& servers);
    void appendBestDoubleServers(const QVector<ServerInfo>& servers);

private:
    void appendBestOfType(const QVector<ServerInfo>& servers, ServerInfo::ServerType type);

    // Exactly the model's rows, headers included.
    QVector<ServerInfo> list;
    // The lower-cased name of each row, filled when the reset ends.
    QVector<QString> sortTexts;
};
