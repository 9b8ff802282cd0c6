#!/usr/bin/env bash
# Renders the screenshots the AppStream metainfo names into dist/screenshots/,
# with the app's own --screenshot on a fresh home (no favourites, no history).
# Run by hand after a visible change, then commit the PNG files; they are
# published under the maker's web site at the address the metainfo gives.
source "$(dirname "$0")/common.sh"

cmake --build "$NORVELLA_BUILD" --target norvella --parallel "$(nproc)"
out="$NORVELLA_ROOT/dist/screenshots"
mkdir -p "$out"
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT

shoot() {
    local file=$1
    shift
    HOME="$home" XDG_CONFIG_HOME="$home/config" XDG_DATA_HOME="$home/data" XDG_RUNTIME_DIR="$home" \
        LANG=en_GB.UTF-8 LANGUAGE=en "$NORVELLA_BUILD/bin/norvella" --screenshot "$out/$file" "$@"
    echo "$out/$file"
}
shoot phone-list.png --size 390x844
shoot phone-verb.png --size 390x844 --open essere
shoot tablet-verb.png --size 1024x768 --open essere
