#pragma once

#include <functional>

#include <QModelIndex>
#include <QSharedPointer>
#include <QVector>
#include <QWidget>

#include "ServerIdentif.h"
#include "ServerInfo.h"

class AbstractFilterModel;
class AbstractServerModel;
class QButtonGroup;
class QLabel;
class QPushButton;
class QStyledItemDelegate;
class SearchEdit;
class ServerNameIndex;
class ServerTreeView;

// The page on which the user picks a location: favourites, standard servers, double-hop
// servers as a tree, or a search over all of them.
class ServerListWindow : public QWidget
{
    Q_OBJECT

public:
    enum ViewType {
        PingView = 0,
        TreeView = 1,
        FavoritesView = 2,
    };
    // Ids of the filter buttons; the search has no button in the group.
    enum FilterId {
        FavoritesFilter = 0,
        StandartFilter = 1,
        DoubleFilter = 2,
        SearchFilter = 3,
    };

    explicit ServerListWindow(QWidget* parent = nullptr);
    ~ServerListWindow() override;

    // Fills the page with the servers usable with `protocol` (-1 keeps the current one).
    void setServers(QVector<ServerInfo> servers, int protocol, bool flag);
    // A new model and proxy of the type for the view, the proxy switched by `show` before the view sees it.
    void setupView(ViewType type, const std::function<void(AbstractFilterModel&)>& show);
    // Re-applies the current filter to freshly built models, keeping the scroll position.
    void updateView();
    int countServerByType(ServerInfo::ServerType type) const;
    bool isDoubleServerFilterVisible() const;
    bool isStandartServerFilterVisible() const;

    // The settings key of the favourites of a protocol.
    static QString favoritesKey(int protocol);

    // For tests and the screenshots.
    ServerTreeView* view() const { return m_view; }
    SearchEdit* searchEdit() const { return m_search; }
    QPushButton* filterButton(FilterId id) const;
    AbstractFilterModel* proxy() const { return m_proxy.data(); }
    QVector<ServerInfo> servers() const { return m_servers; }
    ServerInfo currentServer() const { return m_currentServer; }
    int protocol() const { return m_protocol; }

public slots:
    void onFilterChange(int id);
    void onSearch();
    void onSearchTextChanged();
    void onFavoriteChanged();
    void selServer(QModelIndex index);
    void onBack();

signals:
    void serverSelected(const ServerIdentif& id);
    void back();
    void faq();
    void serverUpdate();

protected:
    void changeEvent(QEvent* event) override;

private:
    void buildForm();
    void retranslate();
    QStringList storedFavorites() const;
    void storeFavorites(const QStringList& favorites);
    QStringList favoritesOfModel() const;
    void onFavoriteRowChanged(const QModelIndex& topLeft);
    void markFavorites(const QStringList& favorites);
    void chooseViewFromLocation();
    // Whether the remembered location is a double-hop one, by its record's type.
    bool lastLocationIsDouble() const;
    void updateViewVisibility();

    QSharedPointer<AbstractServerModel> m_model;
    QSharedPointer<AbstractFilterModel> m_proxy;
    QSharedPointer<QStyledItemDelegate> m_delegate;
    QVector<ServerInfo> m_servers;
    // The flat table's index of those names; made with the first flat table of a list.
    QSharedPointer<const ServerNameIndex> m_names;
    int m_protocol = 4;
    ServerInfo m_currentServer;
    ViewType m_viewType = PingView;
    // The favourite toggled last in the favourites view, whose rows may list a server twice.
    ServerIdentif m_toggled;
    bool m_toggledOn = false;

    QPushButton* m_pbBack;
    QLabel* m_title;
    QButtonGroup* m_group;
    QPushButton* m_pbFavorites;
    QPushButton* m_pbStandart;
    QPushButton* m_pbDouble;
    QPushButton* m_pbSearch;
    SearchEdit* m_search;
    ServerTreeView* m_view;
    QLabel* m_empty;
};
