#!/usr/bin/env bash
# Checks the Debian package in PACKAGE_DIR (where build-package.sh or scripts/package put it): its
# files, control fields, maintainer scripts and lintian's verdict. Usage: check-package.sh PACKAGE_DIR
set -euo pipefail
deb="$(ls "${1:?package directory}"/tavrin_*_amd64.deb)"
scripts="$(mktemp -d)"
trap 'rm -rf "$scripts"' EXIT
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

files="$(dpkg-deb -c "$deb" | awk '{print $6}')"
for f in ./usr/bin/tavrin ./usr/sbin/tavrin-helperd ./usr/lib/systemd/system/tavrin-helperd.service \
         ./usr/share/tavrin/script/update-resolv-conf.sh ./usr/share/applications/tavrin.desktop \
         ./usr/share/icons/hicolor/scalable/apps/tavrin.svg ./usr/share/doc/tavrin/copyright \
         ./usr/share/doc/tavrin/changelog.gz ./usr/share/man/man1/tavrin.1.gz \
         ./usr/share/man/man8/tavrin-helperd.8.gz; do
    grep -qx -- "$f" <<<"$files" || fail "missing $f"
done
grep -q -- '-rwxr-xr-x .* ./usr/share/tavrin/script/update-resolv-conf.sh' <(dpkg-deb -c "$deb") \
    || fail "resolver script not executable"
# The key updates must be signed with, and debsig-verify's policy for it, in directories named by its id.
policy="$(grep -x -- './etc/debsig/policies/[0-9A-F]\{16\}/tavrin.pol' <<<"$files" || true)"
key_id="$(basename "$(dirname "$policy")")"
grep -qx -- "./usr/share/debsig/keyrings/$key_id/tavrin.gpg" <<<"$files" || fail "no update key beside the policy ($policy)"

for dep in openvpn stunnel4 nftables famfamfam-flag-png debsig-verify ca-certificates libqt5core5a libqt5widgets5 libqt5network5; do
    dpkg-deb -f "$deb" Depends | tr ',' '\n' | grep -q "^ *$dep\b" || fail "Depends lacks $dep"
done

dpkg-deb -e "$deb" "$scripts"
# Enabling the unit, the firewall table's removal and the scripts' syntax are met by running them in tst_UpdateInstall.
grep -q 'deb-systemd-invoke restart tavrin-helperd.service' "$scripts/postinst" || fail "postinst does not restart the unit"
grep -q 'deb-systemd-invoke stop tavrin-helperd.service' "$scripts/prerm" || fail "prerm does not stop the unit"
grep -q 'deb-systemd-helper disable tavrin-helperd.service' "$scripts/postrm" || fail "postrm does not disable the unit"
grep -qx "/etc/debsig/policies/$key_id/tavrin.pol" "$scripts/conffiles" || fail "the update policy is no conffile"

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
