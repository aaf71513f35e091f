#pragma once

#include <QString>
#include <QStringList>

// Picks the widget style from the style factory's keys: the last key that
// contains "gtk" (any case), else "Fusion" when present exactly so, else none.
QString chooseStyleName(const QStringList& keys);
