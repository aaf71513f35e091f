#include "ServerTreeView.h"

#include <QHeaderView>

ServerTreeView::ServerTreeView(QWidget* parent)
    : QTreeView(parent)
{
    setObjectName(QStringLiteral("ServerTreeView"));
    setHeaderHidden(true);
    // The star column takes what the name column leaves, so rows span the whole page.
    header()->setStretchLastSection(true);
    // The row delegates draw the expand mark and the indentation of group members themselves.
    setRootIsDecorated(false);
    setIndentation(0);
    setExpandsOnDoubleClick(false);
    setUniformRowHeights(true);
    setMouseTracking(true);
    setSelectionMode(QAbstractItemView::NoSelection);
    setFocusPolicy(Qt::NoFocus);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setFrameShape(QFrame::NoFrame);
    connect(this, &QTreeView::clicked, this, &ServerTreeView::selectLocationIndex);
}
