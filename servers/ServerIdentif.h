#pragma once

#include <QPair>
#include <QString>

// Names one location of one VPN login: (VPN login, server name).
// Equality and order compare the login first, then the name.
using ServerIdentif = QPair<QString, QString>;

// "login::name"
QString identifToSettings(const ServerIdentif& id);
// The reverse; a text without "::" gives two empty members.
ServerIdentif identifFromSettings(const QString& text);
