#!/usr/bin/env bash
# Builds the Debian package the way Debian does: dpkg-buildpackage -us -uc -b in a
# copy of the tree (the working tree, committed or not, without build folders),
# with the build dependencies debian/control names, then checks it with lintian.
# The .deb ends up in build-deb/ (or $NORVELLA_DEB_DIR). Extra arguments go to
# dpkg-buildpackage; DEB_BUILD_OPTIONS=nocheck skips the test suite.
source "$(dirname "$0")/common.sh"

NORVELLA_DEB_DIR=${NORVELLA_DEB_DIR:-$NORVELLA_ROOT/build-deb}
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"

rm -rf "$NORVELLA_DEB_DIR"
source_copy="$NORVELLA_DEB_DIR/src/norvella"
mkdir -p "$source_copy"
(cd "$NORVELLA_ROOT" && git ls-files -z --cached --others --exclude-standard \
    | while IFS= read -r -d '' f; do [ -e "$f" ] && printf '%s\0' "$f"; done \
    | tar --null -T - -cf -) | tar -xf - -C "$source_copy"

export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends dpkg-dev lintian >/dev/null
# The same list dpkg-checkbuilddeps will check, read from debian/control.
$sudo apt-get build-dep -y -qq "$source_copy" >/dev/null

start=$(date +%s)
(cd "$source_copy" && dpkg-buildpackage -us -uc -b "$@")
echo "dpkg-buildpackage took $(( $(date +%s) - start )) s"

mv "$NORVELLA_DEB_DIR"/src/*.deb "$NORVELLA_DEB_DIR"/
mv "$NORVELLA_DEB_DIR"/src/*.changes "$NORVELLA_DEB_DIR"/src/*.buildinfo "$NORVELLA_DEB_DIR"/ 2>/dev/null || true
deb=$(ls "$NORVELLA_DEB_DIR"/norvella_*.deb | grep -v dbgsym | head -n 1)
echo "== lintian $deb"
# Errors fail the script; warnings and notes are printed for a person to read.
lintian --fail-on error --info "$deb"
echo "Built $deb"
