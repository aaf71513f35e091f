#!/usr/bin/env bash
# Makes an update to offer: a package "tavrin" of VERSION holding the helper daemon of BUILD_DIR,
# signed with a throw-away key made here, for a helper daemon whose files live under DIR/root and
# that installs into DIR/dpkg-root, whose database has the build's own version installed.
#   make-update.sh DIR BUILD_DIR VERSION      writes DIR/update.deb
# Nothing outside DIR is touched: the machine's own dpkg database and keys stay as they are.
set -euo pipefail
dir=${1:?directory}
build=$(cd "${2:?build directory}" && pwd)
version=${3:?version}
script="$(cd "$(dirname "$0")/../.." && pwd)/packaging/update-key.sh"
key=$dir/update-key
tree=$dir/update-tree
arch=$(dpkg --print-architecture)
current=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")

fingerprint=$("$script" new "$key")
"$script" trust "$key/public.gpg" "$dir/root" >/dev/null
rm -rf "$tree"
mkdir -p "$tree/DEBIAN" "$tree/usr/sbin" "$tree/usr/share/doc/tavrin"
printf 'Package: tavrin\nVersion: %s\nArchitecture: %s\nMaintainer: Tavrin demo <demo@tavrin.invalid>\nDescription: demo update\n' \
    "$version" "$arch" >"$tree/DEBIAN/control"
# The helper daemon restarts as the one the update installs.
install -m 755 "$build/helper/tavrin-helperd" "$tree/usr/sbin/tavrin-helperd"
echo "Installed by the Tavrin demo's update." >"$tree/usr/share/doc/tavrin/README.demo"
dpkg-deb --root-owner-group -Znone -b "$tree" "$dir/update.deb" >/dev/null
rm -rf "$tree"
GNUPGHOME=$key "$script" sign "$fingerprint" "$dir/update.deb"
GNUPGHOME=$key gpgconf --kill gpg-agent 2>/dev/null || true

mkdir -p "$dir/dpkg-root/var/lib/dpkg/updates" "$dir/dpkg-root/var/lib/dpkg/info"
: >"$dir/dpkg-root/var/lib/dpkg/info/tavrin.list"
printf 'Package: tavrin\nStatus: install ok installed\nVersion: %s\nArchitecture: %s\nMaintainer: Tavrin demo <demo@tavrin.invalid>\nDescription: the running version\n\n' \
    "$current" "$arch" >"$dir/dpkg-root/var/lib/dpkg/status"
