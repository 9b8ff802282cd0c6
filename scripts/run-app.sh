#!/usr/bin/env bash
# Installs everything, builds, and starts Norvella: in a window where there is a
# display, otherwise it renders the first screen to norvella.png and exits.
source "$(dirname "$0")/common.sh"
install_packages
build_all
if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
    exec "$NORVELLA_BUILD/bin/norvella" "$@"
fi
"$NORVELLA_BUILD/bin/norvella" --screenshot "$NORVELLA_ROOT/norvella.png" --size 390x844 "$@"
echo "No display found: the first screen was rendered to $NORVELLA_ROOT/norvella.png"
