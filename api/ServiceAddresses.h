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

// The address of the API's and of the web site's host (IPv4 where there is one), without repeats; the program
// makes this call at start, on the main thread. A host's address is the one kept in the settings; a host never
// looked up before is looked up now (blocking). An address a lookup found is kept for the next runs once a TLS
// handshake with it has shown the host's certificate, and a lookup in the background keeps it up to date.
QStringList pinned();
// Keeps the address for the host in the settings once a TLS handshake with it on the port has shown the host's
// certificate (in the background): an address a hostile resolver gave goes no further than the run that asked.
void keepIfVerified(const QString& host, quint16 port, const QString& address);
// Whether requests to a pinned host go to its address rather than through a name lookup.
void setBypassingLookups(bool on);
bool bypassingLookups();
// A request for the URL with the service's TLS settings, sent to the host's pinned address when lookups are
// being bypassed.
QNetworkRequest request(const QUrl& url);

} // namespace ServiceAddresses
