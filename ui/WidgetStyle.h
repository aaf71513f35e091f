#pragma once

#include <QString>

class QHBoxLayout;
class QLabel;
class QPushButton;
class QWidget;

// The style sheet shared by the small windows and dialogs, kept as one resource file, and the frame that the
// full-window pages share.
namespace WidgetStyle {

QString sheet();

// Names the page and gives it the styled background, the shared sheet and the pages' minimum size.
void setUpPage(QWidget* page, const QString& objectName);
// Makes `button` the pages' back arrow.
void setUpBackButton(QPushButton* button);
// A page's top row: the centred title between `left` and `right`. Either side may be null: room as wide as the
// other side is kept instead, so that the title stays centred.
QHBoxLayout* topRow(QWidget* left, QLabel* title, QWidget* right);

} // namespace WidgetStyle
