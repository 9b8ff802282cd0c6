#!/usr/bin/env bash
# Refreshes the SVG icons from the Tabler icon set (npm @tabler/icons, MIT).
# Run by hand; the build uses the committed copies.
set -euo pipefail
version=3.51.0
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
(cd "$work" && npm pack --silent "@tabler/icons@$version" >/dev/null && tar xzf tabler-icons-$version.tgz)
# name-in-app  style/name-in-set
while read -r name source; do
    [ -n "$name" ] || continue
    cp "$work/package/icons/$source.svg" "$here/$name.svg"
done <<'LIST'
favourite outline/star
favourite-filled filled/star
remove outline/trash
menu outline/menu-2
search outline/search
clear outline/x
back outline/chevron-left
play outline/player-play
pause outline/player-pause
share outline/share
settings outline/settings
more-apps outline/apps
contact outline/mail
privacy outline/shield-lock
list outline/list
history outline/history
copy outline/copy
download outline/download
file-text outline/file-text
file-pdf outline/file-type-pdf
volume outline/volume
check outline/check
language outline/language
book outline/book
vocabulary outline/vocabulary
alphabet outline/alphabet-latin
LIST
cp "$work/package/LICENSE" "$here/LICENSE.tabler"
echo "icons refreshed from @tabler/icons $version"
