#!/usr/bin/env bash
# Builds the Debian package from a build directory and checks its files, control fields,
# maintainer scripts and lintian's verdict. Usage: check-package.sh BUILD_DIR [PACKAGE_DIR]
# With PACKAGE_DIR, the package that build-package.sh already put there is checked instead.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
build="$1"
out="$(mktemp -d)"
trap 'rm -rf "$out"' EXIT

if [ $# -ge 2 ]; then
    deb="$(ls "$2"/tavrin_*_amd64.deb)"
else
    deb="$("$here/build-package.sh" "$build" "$out/deb")"
fi
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

files="$(dpkg-deb -c "$deb" | awk '{print $6}')"
for f in ./usr/bin/tavrin ./usr/sbin/tavrin-helperd ./usr/lib/systemd/system/tavrin-helperd.service \
         ./usr/share/tavrin/script/update-resolv-conf.sh ./usr/share/applications/tavrin.desktop \
         ./usr/share/icons/hicolor/scalable/apps/tavrin.svg ./usr/share/doc/tavrin/copyright \
         ./usr/share/doc/tavrin/changelog.gz; do
    grep -qx -- "$f" <<<"$files" || fail "missing $f"
done
grep -q -- '-rwxr-xr-x .* ./usr/share/tavrin/script/update-resolv-conf.sh' <(dpkg-deb -c "$deb") \
    || fail "resolver script not executable"
# The key updates must be signed with, and debsig-verify's policy for it, in directories named by its id.
policy="$(grep -x -- './etc/debsig/policies/[0-9A-F]\{16\}/tavrin.pol' <<<"$files" || true)"
key_id="$(basename "$(dirname "$policy")")"
grep -qx -- "./usr/share/debsig/keyrings/$key_id/tavrin.gpg" <<<"$files" || fail "no update key beside the policy ($policy)"

field() { dpkg-deb -f "$deb" "$1"; }
[ "$(field Package)" = tavrin ] || fail "Package is $(field Package)"
[ "$(field Version)" = 3.6.9 ] || fail "Version is $(field Version)"
[ "$(field Architecture)" = amd64 ] || fail "Architecture is $(field Architecture)"
for dep in openvpn stunnel4 nftables famfamfam-flag-png debsig-verify ca-certificates libqt5core5a libqt5widgets5 libqt5network5; do
    field Depends | tr ',' '\n' | grep -q "^ *$dep\b" || fail "Depends lacks $dep"
done

scripts="$(mktemp -d -p "$out")"
dpkg-deb -e "$deb" "$scripts"
grep -q 'deb-systemd-helper enable tavrin-helperd.service' "$scripts/postinst" || fail "postinst does not enable the unit"
grep -q 'deb-systemd-invoke restart tavrin-helperd.service' "$scripts/postinst" || fail "postinst does not restart the unit"
grep -q 'deb-systemd-invoke stop tavrin-helperd.service' "$scripts/prerm" || fail "prerm does not stop the unit"
grep -q 'nft delete table inet tavrin' "$scripts/prerm" || fail "prerm leaves the firewall table"
grep -q 'deb-systemd-helper disable tavrin-helperd.service' "$scripts/postrm" || fail "postrm does not disable the unit"
grep -qx "/etc/debsig/policies/$key_id/tavrin.pol" "$scripts/conffiles" || fail "the update policy is no conffile"
for s in postinst prerm postrm; do
    sh -n "$scripts/$s" || fail "$s does not parse"
done

if command -v lintian >/dev/null; then
    errors="$(lintian "$deb" 2>/dev/null | grep '^E:' || true)"
    [ -z "$errors" ] || fail "lintian errors:
$errors"
    echo "lintian: $(lintian "$deb" 2>/dev/null | grep -c '^W:' || true) warnings, no errors"
else
    fail "lintian is not installed (scripts/install-deps)"
fi

[ "$failures" -eq 0 ] || exit 1
echo "package $(basename "$deb") checked"
