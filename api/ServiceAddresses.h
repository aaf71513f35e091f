#pragma once

#include <QNetworkRequest>
#include <QStringList>
#include <QUrl>

// Where the service's hosts are, looked up once per run, before the kill switch's rules can stop name lookups.
// While those rules block everything else, the program's own requests go straight to these addresses (which
// the rules let through), with the host's name kept as the Host header and as the name its certificate must
// carry. Otherwise requests use the host name as usual.
namespace ServiceAddresses {

// Looks up the hosts of the API and of the web site (blocking, once per host; the program makes this call at
// start) and returns the first address of each, without repeats.
QStringList pinned();
// Whether requests to a pinned host go to its address rather than through a name lookup.
void setBypassingLookups(bool on);
bool bypassingLookups();
// A request for the URL with the service's TLS settings, sent to the host's pinned address when lookups are
// being bypassed.
QNetworkRequest request(const QUrl& url);

} // namespace ServiceAddresses
