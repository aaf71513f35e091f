#pragma once

#include <QString>

// The style sheet shared by the small windows and dialogs, kept as one resource file.
namespace WidgetStyle {

QString sheet();

} // namespace WidgetStyle
