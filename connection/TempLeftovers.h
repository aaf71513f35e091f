#pragma once

#include <QString>

#include <functional>

// What earlier runs of this user, killed before they could tidy up, left in the temporary directory
// under one of Qt's own temporary names: the application's name, the separator ('.' for
// QTemporaryFile, '-' for QTemporaryDir) and six characters. Hands each regular file (or each
// directory) of this user's with such a name to found; links are never followed.
void forEachTempLeftover(QChar separator, bool directories, const std::function<void(const QString& path)>& found);
