#!/usr/bin/env bash
# Installs the package scripts/build-deb.sh made (apt-get install ./norvella_*.deb,
# which pulls in its dependencies) and starts the installed /usr/bin/norvella:
# it renders its first screen offscreen from the installed master database.
source "$(dirname "$0")/common.sh"

NORVELLA_DEB_DIR=${NORVELLA_DEB_DIR:-$NORVELLA_ROOT/build-deb}
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"

deb=$(ls "$NORVELLA_DEB_DIR"/norvella_*.deb 2>/dev/null | grep -v dbgsym | head -n 1 || true)
if [ -z "$deb" ]; then
    echo "No norvella_*.deb in $NORVELLA_DEB_DIR: run scripts/build-deb.sh first" >&2
    exit 1
fi
export DEBIAN_FRONTEND=noninteractive
(cd "$NORVELLA_DEB_DIR" && $sudo apt-get install -y -qq "./$(basename "$deb")" >/dev/null)
dpkg -L norvella

# A home of its own, as a first launch of a new user.
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
mkdir -p "$home/config" "$home/data" "$home/runtime"
chmod 700 "$home/runtime"
env -i PATH=/usr/bin:/bin HOME="$home" XDG_CONFIG_HOME="$home/config" XDG_DATA_HOME="$home/data" \
    XDG_RUNTIME_DIR="$home/runtime" LANG=C.UTF-8 \
    /usr/bin/norvella --screenshot "$home/first.png" --size 390x844 --open essere
if [ "$(head -c 8 "$home/first.png" | od -An -tx1 | tr -d ' \n')" != "89504e470d0a1a0a" ]; then
    echo "The installed norvella did not write a PNG" >&2
    exit 1
fi
if [ ! -s "$home/data/Norvella/norvella/verbs.db" ]; then
    echo "The installed norvella did not copy its master database" >&2
    exit 1
fi
echo "The installed norvella started and drew its first screen ($(stat -c %s "$home/first.png") bytes)"
