#pragma once

#include <QString>

// Addresses of the Velmora service. Each can be moved by an environment variable so that tests and the local
// demo talk to a fake on loopback; unset, the product addresses hold.
namespace ServiceUrls {

// API base: https, no path, no trailing slash. TAVRIN_API_URL.
QString api();
// Web-site base, same form. TAVRIN_SITE_URL.
QString site();
// The web site's host, as named in messages: "velmora.com" when the address has none.
QString siteHost();
// Front page of a large public site fetched over plain http to tell "no network" from "no service".
// TAVRIN_PROBE_URL.
QString probe();

} // namespace ServiceUrls
