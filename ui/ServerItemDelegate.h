#pragma once

#include <QStyledItemDelegate>

#include "ServerInfo.h"

// Draws one server row of the location lists: flag, name and latency in column 0, the
// favourite star in column 1. A left click on the star toggles the row's favourite mark.
// Rows follow the view's layout direction: right to left, the flag sits at the right end and the
// latency at the left end of the cell.
class ServerItemDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    static constexpr int RowHeight = 40;
    static constexpr int StarSize = 18;

    explicit ServerItemDelegate(QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    // The record behind an index of a server model, seen through any number of proxies.
    static ServerInfo recordOf(const QModelIndex& index);
    // "23 ms", or "—" while the latency is unknown (not measured yet, or no answer).
    static QString latencyText(int ping);
    static QRect starRect(const QRect& cell);

    // Explains the "—" of a server whose latency is unknown.
    bool helpEvent(QHelpEvent* event,
                   QAbstractItemView* view,
                   const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

protected:
    bool editorEvent(QEvent* event,
                     QAbstractItemModel* model,
                     const QStyleOptionViewItem& option,
                     const QModelIndex& index) override;

    // Rows that are not servers (group rows, section headers): paint them and answer true.
    virtual bool paintOtherRow(QPainter* painter,
                               const QStyleOptionViewItem& option,
                               const QModelIndex& index,
                               const ServerInfo& record) const;
    // Whether a record is a server that can carry a star.
    virtual bool isServer(const ServerInfo& record) const;
    // Left margin of server rows' content.
    virtual int contentIndent(const QModelIndex& index) const;

    static void paintBackground(QPainter* painter, const QStyleOptionViewItem& option, const QColor& base);
    static void paintSeparator(QPainter* painter, const QRect& rect);
    static QFont font(int pixelSize, bool bold = false);
    // A place given as if the row ran left to right, moved to where the row's direction puts it.
    static QRect visualRect(const QStyleOptionViewItem& option, const QRect& logical);
    // Text alignment towards the leading (Qt::AlignLeft) or trailing (Qt::AlignRight) end of the row.
    static Qt::Alignment visualAlignment(const QStyleOptionViewItem& option, Qt::Alignment logical);

private:
    // Where a row's latency text sits, at the trailing end of its first cell.
    static QRect latencyRect(const QStyleOptionViewItem& option, const QString& text);
    void paintServerCell(QPainter* painter,
                         const QStyleOptionViewItem& option,
                         const QModelIndex& index,
                         const ServerInfo& record) const;
    void paintStar(QPainter* painter, const QStyleOptionViewItem& option, bool favorite) const;
};
