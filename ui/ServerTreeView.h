#pragma once

#include <QTreeView>

// The list of locations on the server list page. A click anywhere on a row reports the row,
// so that whole rows act as buttons.
class ServerTreeView : public QTreeView
{
    Q_OBJECT

public:
    explicit ServerTreeView(QWidget* parent = nullptr);

signals:
    void selectLocationIndex(QModelIndex index);
};
