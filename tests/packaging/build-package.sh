#!/usr/bin/env bash
# Builds the Debian package from a build directory into OUT_DIR (emptied first) and prints its
# path. Usage: build-package.sh BUILD_DIR OUT_DIR
set -euo pipefail
build="$1"
out="$(realpath -m "$2")"
rm -rf "$out"
mkdir -p "$out"
(cd "$build" && cpack -G DEB -B "$out" >/dev/null)
rm -rf "$out/_CPack_Packages"
ls "$out"/tavrin_*_amd64.deb
