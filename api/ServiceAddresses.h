#pragma once

#include <QNetworkRequest>
#include <QStringList>
#include <QUrl>

// Where the service's hosts are, fixed once per run, before the kill switch's rules can stop name lookups. While
// the kill switch is on, the program's own requests go straight to these addresses (which its rules let
// through), with the host's name kept as the Host header and as the name its certificate must carry, so that
// they work while the rules block everything else, including a start with rules left in force by a crash.
// Otherwise requests use the host name as usual.
namespace ServiceAddresses {

// The first address of the API's and of the web site's host, without repeats; the program makes this call
// at start. A host's address is the one its last lookup found, kept in the settings, and a lookup in the
// background keeps that up to date for the next run; a host never looked up before is looked up now (blocking).
QStringList pinned();
// Whether requests to a pinned host go to its address rather than through a name lookup.
void setBypassingLookups(bool on);
bool bypassingLookups();
// A request for the URL with the service's TLS settings, sent to the host's pinned address when lookups are
// being bypassed.
QNetworkRequest request(const QUrl& url);

} // namespace ServiceAddresses
