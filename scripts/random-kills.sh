#!/usr/bin/env bash
# Kills the real app at random moments of a database update, relaunches it and
# checks that every favourite and history row is still there. The number of
# kills is the first argument (200 by default).
source "$(dirname "$0")/common.sh"
install_packages
build_all
NORVELLA_RANDOM_KILLS="${1:-200}" "$NORVELLA_BUILD/bin/tst_crashsafety" killAtRandomMoments
