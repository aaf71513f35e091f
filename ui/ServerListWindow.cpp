#include "ServerListWindow.h"

#include <QButtonGroup>
#include <QDebug>
#include <QEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QSet>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>

#include "FavoriteServerItemDelegate.h"
#include "FavoritesServerModel.h"
#include "FavoritesSortFilterProxyModel.h"
#include "LocalSettings.h"
#include "PingSortFilterProxyModel.h"
#include "SearchEdit.h"
#include "ServerItemDelegate.h"
#include "ServerPingModel.h"
#include "ServerTreeItemDelegate.h"
#include "ServerTreeModel.h"
#include "ServerTreeView.h"
#include "TreePingSortFilterProxyModel.h"
#include "WidgetStyle.h"

namespace {

// Models may be replaced from inside their own signal handlers (a star click), so they go
// away only when control is back in the event loop, or with the page, their parent.
template <typename T>
QSharedPointer<T> later(T* object)
{
    return QSharedPointer<T>(object, &QObject::deleteLater);
}

QString settingsText(const ServerInfo& server)
{
    return identifToSettings(ServerIdentif(server.user, server.name));
}

} // namespace

ServerListWindow::ServerListWindow(QWidget* parent)
    : QWidget(parent)
{
    buildForm();
    connect(m_group, &QButtonGroup::idClicked, this, &ServerListWindow::onFilterChange);
    connect(m_search, &QLineEdit::textChanged, this, &ServerListWindow::onSearchTextChanged);
    connect(m_pbSearch, &QPushButton::clicked, this, &ServerListWindow::onSearch);
    connect(m_view, &ServerTreeView::selectLocationIndex, this, &ServerListWindow::selServer);
    connect(m_pbBack, &QPushButton::clicked, this, &ServerListWindow::onBack);
    m_view->header()->resizeSection(0, 160);
    m_view->header()->resizeSection(1, 70);
    retranslate();
}

ServerListWindow::~ServerListWindow()
{
    // The view must let go of the proxy before the proxy goes.
    m_view->setModel(nullptr);
}

void ServerListWindow::buildForm()
{
    WidgetStyle::setUpPage(this, QStringLiteral("ServerListWindow"));

    m_pbBack = new QPushButton(this);
    WidgetStyle::setUpBackButton(m_pbBack);
    m_title = new QLabel(this);
    QHBoxLayout* top = WidgetStyle::topRow(m_pbBack, m_title, nullptr);

    m_group = new QButtonGroup(this);
    // The page checks and unchecks the buttons itself, the search button included.
    m_group->setExclusive(false);
    auto makeFilter = [this](const char* name) {
        auto* button = new QPushButton(this);
        button->setObjectName(QLatin1String(name));
        button->setCheckable(true);
        button->setCursor(Qt::PointingHandCursor);
        button->setProperty("filterButton", true);
        return button;
    };
    m_pbFavorites = makeFilter("pbFavorites");
    m_pbStandart = makeFilter("pbStandart");
    m_pbDouble = makeFilter("pbDouble");
    m_pbSearch = makeFilter("pbSearch");
    m_pbSearch->setIcon(QIcon(QStringLiteral(":/resources/search.svg")));
    m_pbSearch->setIconSize(QSize(16, 16));
    m_group->addButton(m_pbFavorites, FavoritesFilter);
    m_group->addButton(m_pbStandart, StandartFilter);
    m_group->addButton(m_pbDouble, DoubleFilter);
    auto* filters = new QHBoxLayout;
    filters->setContentsMargins(10, 0, 10, 0);
    filters->setSpacing(2);
    filters->addWidget(m_pbFavorites);
    filters->addWidget(m_pbStandart);
    filters->addWidget(m_pbDouble);
    filters->addStretch(1);
    filters->addWidget(m_pbSearch);

    m_search = new SearchEdit(this);
    m_search->hide();
    auto* searchRow = new QHBoxLayout;
    searchRow->setContentsMargins(12, 8, 12, 4);
    searchRow->addWidget(m_search);

    m_view = new ServerTreeView(this);
    m_empty = new QLabel(this);
    m_empty->setObjectName(QStringLiteral("lbEmpty"));
    m_empty->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    m_empty->setWordWrap(true);
    m_empty->hide();

    auto* line = new QFrame(this);
    line->setObjectName(QStringLiteral("filterLine"));
    line->setFixedHeight(1);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(top);
    layout->addLayout(filters);
    layout->addWidget(line);
    layout->addLayout(searchRow);
    layout->addWidget(m_view, 1);
    layout->addWidget(m_empty, 1);
}

void ServerListWindow::retranslate()
{
    m_title->setText(tr("Locations"));
    m_pbFavorites->setText(tr("Favorites"));
    m_pbStandart->setText(tr("Standard VPN"));
    m_pbDouble->setText(tr("Double VPN"));
    m_pbSearch->setToolTip(tr("Search"));
    m_empty->setText(tr("No locations found"));
}

void ServerListWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QWidget::changeEvent(event);
}

QPushButton* ServerListWindow::filterButton(FilterId id) const
{
    switch (id) {
    case FavoritesFilter:
        return m_pbFavorites;
    case StandartFilter:
        return m_pbStandart;
    case DoubleFilter:
        return m_pbDouble;
    case SearchFilter:
        return m_pbSearch;
    }
    return nullptr;
}

QString ServerListWindow::favoritesKey(int protocol)
{
    switch (protocol) {
    case OpenVpnUdp:
        return Keys::FavoriteServersUdp;
    case OpenVpnTcp:
        return Keys::FavoriteServersTcp;
    default:
        return Keys::FavoriteServersSsl;
    }
}

QStringList ServerListWindow::storedFavorites() const
{
    // A reset stores an empty text, which reads back as one empty entry.
    QStringList favorites = LocalSettings::instance()->value(favoritesKey(m_protocol)).toStringList();
    favorites.removeAll(QString());
    return favorites;
}

void ServerListWindow::storeFavorites(const QStringList& favorites)
{
    LocalSettings::instance()->setValue(favoritesKey(m_protocol), favorites);
}

void ServerListWindow::setServers(QVector<ServerInfo> servers, int protocol, bool flag)
{
    qDebug() << "ServerListWindow::setServers proto id:" << protocol;
    if (protocol != -1)
        m_protocol = protocol;
    const QStringList favoriteList = storedFavorites();
    const QSet<QString> favorites(favoriteList.cbegin(), favoriteList.cend());
    QVector<ServerInfo> kept;
    kept.reserve(servers.size());
    QStringList users;
    QSet<QString> seenUsers;
    for (ServerInfo& server : servers) {
        if (!offersProtocol(server, m_protocol))
            continue;
        server.favorite = !favorites.isEmpty() && favorites.contains(settingsText(server));
        server.protocol = PROTOCOL_TYPE(m_protocol);
        if (!seenUsers.contains(server.user)) {
            seenUsers.insert(server.user);
            users.append(server.user);
        }
        kept.append(std::move(server));
    }
    qDebug() << "list: " << users;
    for (const QString& user : qAsConst(users))
        qDebug() << "user: " << user;
    qDebug() << "ServerListWindow::setServers count:" << kept.size();
    // A refresh or another protocol mostly brings the names of the list before, in the same order: what the flat
    // table derives from them then stands.
    const auto sameName = [](const ServerInfo& left, const ServerInfo& right) {
        return left.name == right.name;
    };
    if (kept.size() != m_servers.size() || !std::equal(kept.cbegin(), kept.cend(), m_servers.cbegin(), sameName))
        m_names.reset();
    m_servers = std::move(kept);

    if (flag && !favoriteList.isEmpty())
        onFilterChange(FavoritesFilter);
    else
        chooseViewFromLocation();
}

bool ServerListWindow::lastLocationIsDouble() const
{
    const ServerIdentif last = identifFromSettings(LocalSettings::instance()->value(Keys::LastLocation).toString());
    for (const ServerInfo& server : m_servers) {
        if (server.user == last.first && server.name == last.second)
            return server.type == ServerInfo::Double;
    }
    return false;
}

void ServerListWindow::chooseViewFromLocation()
{
    if (lastLocationIsDouble())
        onFilterChange(isDoubleServerFilterVisible() ? DoubleFilter : StandartFilter);
    else
        onFilterChange(isStandartServerFilterVisible() ? StandartFilter : DoubleFilter);
}

void ServerListWindow::setupView(ViewType type, const std::function<void(AbstractFilterModel&)>& show)
{
    QSharedPointer<AbstractServerModel> model;
    QSharedPointer<AbstractFilterModel> proxy;
    QSharedPointer<QStyledItemDelegate> delegate;
    switch (type) {
    case PingView: {
        auto* ping = new ServerPingModel(this);
        connect(ping, &ServerPingModel::favoriteChanged, this, &ServerListWindow::onFavoriteChanged);
        ping->setServers(m_servers, m_names);
        m_names = ping->names();
        model = later<AbstractServerModel>(ping);
        proxy = later<AbstractFilterModel>(new PingSortFilterProxyModel(this));
        delegate = later<QStyledItemDelegate>(new ServerItemDelegate(this));
        break;
    }
    case TreeView: {
        auto* tree = new ServerTreeModel(this);
        connect(tree, &ServerTreeModel::favoriteChanged, this, &ServerListWindow::onFavoriteChanged);
        // Only the double view uses the tree; standard servers would each make a group there that the
        // filter then has to walk and hide.
        QVector<ServerInfo> doubles;
        for (const ServerInfo& server : qAsConst(m_servers)) {
            if (server.type == ServerInfo::Double)
                doubles.append(server);
        }
        tree->setServers(doubles);
        model = later<AbstractServerModel>(tree);
        proxy = later<AbstractFilterModel>(new TreePingSortFilterProxyModel(this));
        delegate = later<QStyledItemDelegate>(new ServerTreeItemDelegate(this));
        break;
    }
    case FavoritesView: {
        auto* favorites = new FavoritesServerModel(this);
        // This model tells of a star only through dataChanged.
        connect(favorites, &QAbstractItemModel::dataChanged, this, &ServerListWindow::onFavoriteRowChanged);
        favorites->setServers(m_servers);
        model = later<AbstractServerModel>(favorites);
        proxy = later<AbstractFilterModel>(new FavoritesSortFilterProxyModel(this));
        delegate = later<QStyledItemDelegate>(new FavoriteServerItemDelegate(this));
        break;
    }
    }
    m_viewType = type;
    proxy->setSourceModel(model.data());
    // Filtered and sorted before the view first asks for rows, and the header told so before sorting is switched on
    // (which sorts by the header's indicator, descending at first): each filter or sort of ten thousand rows counts.
    show(*proxy);
    proxy->sort(0, Qt::AscendingOrder);
    m_view->setItemDelegate(delegate.data());
    QItemSelectionModel* oldSelection = m_view->selectionModel();
    m_view->setModel(proxy.data());
    delete oldSelection;
    m_model = model;
    m_proxy = proxy;
    m_delegate = delegate;
    m_view->header()->setSortIndicator(0, Qt::AscendingOrder);
    m_view->setSortingEnabled(true);
    m_view->header()->resizeSection(0, 260);
    m_view->header()->resizeSection(1, 60);
    m_pbFavorites->setVisible(true);
    m_pbStandart->setVisible(isStandartServerFilterVisible());
    m_pbDouble->setVisible(isDoubleServerFilterVisible());
}

int ServerListWindow::countServerByType(ServerInfo::ServerType type) const
{
    if (type != ServerInfo::Standart && type != ServerInfo::Double)
        return 0;
    return int(std::count_if(
        m_servers.cbegin(), m_servers.cend(), [type](const ServerInfo& server) { return server.type == type; }));
}

bool ServerListWindow::isDoubleServerFilterVisible() const
{
    return countServerByType(ServerInfo::Double) > 0;
}

bool ServerListWindow::isStandartServerFilterVisible() const
{
    return countServerByType(ServerInfo::Standart) > 0;
}

void ServerListWindow::onFilterChange(int id)
{
    m_pbFavorites->setChecked(false);
    m_pbStandart->setChecked(false);
    m_pbDouble->setChecked(false);
    m_pbSearch->setChecked(false);
    m_search->hide();
    switch (id) {
    case FavoritesFilter:
        setupView(FavoritesView, [](AbstractFilterModel& proxy) { proxy.showFavorite(); });
        m_pbFavorites->setChecked(true);
        m_view->expandAll();
        break;
    case StandartFilter:
        setupView(PingView, [](AbstractFilterModel& proxy) { proxy.showStandart(); });
        m_pbStandart->setChecked(true);
        m_view->collapseAll();
        break;
    case DoubleFilter:
        setupView(TreeView, [](AbstractFilterModel& proxy) { proxy.showDouble(); });
        m_pbDouble->setChecked(true);
        m_view->collapseAll();
        break;
    case SearchFilter: {
        QString text = m_search->text();
        setupView(PingView, [&text](AbstractFilterModel& proxy) { proxy.showAll(text); });
        m_pbFavorites->hide();
        m_pbDouble->hide();
        m_pbStandart->hide();
        m_view->collapseAll();
        m_pbSearch->setChecked(true);
        m_search->show();
        m_search->setFocus();
        break;
    }
    default:
        break;
    }
    updateViewVisibility();
}

void ServerListWindow::updateViewVisibility()
{
    const bool rows = m_proxy && m_proxy->rowCount() > 0;
    m_view->setVisible(rows);
    m_empty->setVisible(!rows);
}

void ServerListWindow::onSearch()
{
    if (m_pbSearch->isChecked()) {
        onFilterChange(SearchFilter);
        return;
    }
    m_pbSearch->setChecked(false);
    if (!storedFavorites().isEmpty()) {
        onFilterChange(FavoritesFilter);
        return;
    }
    const QString name = identifFromSettings(LocalSettings::instance()->value(Keys::LastLocation).toString()).second;
    if (name.isEmpty())
        return;
    onFilterChange(lastLocationIsDouble() ? DoubleFilter : StandartFilter);
}

void ServerListWindow::onSearchTextChanged()
{
    if (!m_pbSearch->isChecked() || !m_proxy)
        return;
    QString text = m_search->text();
    m_proxy->showAll(text);
    updateViewVisibility();
}

void ServerListWindow::selServer(QModelIndex index)
{
    if (!index.isValid() || !m_model || index.model() != m_proxy.data())
        return;
    m_currentServer = m_model->locationByIndex(m_proxy->mapToSource(index));
    if (m_currentServer.name.isEmpty()) {
        const QModelIndex group = index.sibling(index.row(), 0);
        m_view->setExpanded(group, !m_view->isExpanded(group));
        return;
    }
    if (index.column() == 1)
        return;
    if (index.sibling(index.row(), 0).data(AbstractServerModel::SectionHeaderRole).toBool())
        return;
    qDebug() << "ServerListWindow::selServer" << m_currentServer.description();
    emit serverSelected(ServerIdentif(m_currentServer.user, m_currentServer.name));
}

void ServerListWindow::onFavoriteRowChanged(const QModelIndex& topLeft)
{
    const ServerInfo record = m_model ? m_model->locationByIndex(topLeft) : ServerInfo();
    m_toggled = ServerIdentif(record.user, record.name);
    m_toggledOn = record.favorite;
    onFavoriteChanged();
}

QStringList ServerListWindow::favoritesOfModel() const
{
    QVector<ServerInfo> favorites;
    if (auto* ping = qobject_cast<ServerPingModel*>(m_model.data()))
        favorites = ping->getFavoriteLocation();
    else if (auto* tree = qobject_cast<ServerTreeModel*>(m_model.data()))
        favorites = tree->getFavoriteLocation();
    else if (auto* list = qobject_cast<FavoritesServerModel*>(m_model.data()))
        favorites = list->getFavoriteLocation();
    QStringList texts;
    for (const ServerInfo& server : qAsConst(favorites)) {
        if (server.name == FavoritesServerModel::favoriteHeaderName)
            continue;
        const QString text = settingsText(server);
        if (!texts.contains(text))
            texts.append(text);
    }
    if (qobject_cast<ServerTreeModel*>(m_model.data())) {
        // The tree holds the double-hop servers only; the other favourites stay as stored.
        QSet<QString> inTree;
        for (const ServerInfo& server : qAsConst(m_servers)) {
            if (server.type == ServerInfo::Double)
                inTree.insert(settingsText(server));
        }
        QStringList kept;
        for (const QString& stored : storedFavorites()) {
            if (!inTree.contains(stored))
                kept.append(stored);
        }
        texts = kept + texts;
    }
    if (qobject_cast<FavoritesServerModel*>(m_model.data())) {
        // A favourite that is also recommended shows twice; the star clicked last decides for both.
        const QString toggled = identifToSettings(m_toggled);
        texts.removeAll(toggled);
        if (m_toggledOn)
            texts.append(toggled);
    }
    return texts;
}

void ServerListWindow::markFavorites(const QStringList& favorites)
{
    const QSet<QString> marked(favorites.cbegin(), favorites.cend());
    for (ServerInfo& server : m_servers)
        server.favorite = marked.contains(settingsText(server));
}

void ServerListWindow::onFavoriteChanged()
{
    const QStringList favorites = favoritesOfModel();
    qDebug() << "Fav:" << favorites;
    storeFavorites(favorites);
    markFavorites(favorites);
    // Only the favourites list changes its rows with a star; the other views show the new mark already.
    if (m_pbFavorites->isChecked())
        QTimer::singleShot(0, this, &ServerListWindow::updateView);
}

void ServerListWindow::updateView()
{
    int id = -1;
    for (int filter : {FavoritesFilter, StandartFilter, DoubleFilter, SearchFilter}) {
        if (filterButton(FilterId(filter))->isChecked())
            id = filter;
    }
    if (id < 0)
        return;
    const int scroll = m_view->verticalScrollBar()->value();
    onFilterChange(id);
    m_view->verticalScrollBar()->setValue(scroll);
}

void ServerListWindow::onBack()
{
    emit back();
}
