#!/usr/bin/env bash
# Installs everything, builds, and runs the whole test suite through CTest:
# first in the usual build, then in a Debug build with the sanitizers. Both
# suites run whatever the first one gives; the exit status is non-zero when
# either failed.
source "$(dirname "$0")/common.sh"
install_packages
status=0

build_all
echo "== Test suite, RelWithDebInfo build ($NORVELLA_BUILD)"
(cd "$NORVELLA_BUILD" && ctest --output-on-failure --parallel "$(nproc)" "$@") || status=1

build_sanitized
echo "== Test suite, Debug build with AddressSanitizer and UndefinedBehaviorSanitizer ($NORVELLA_SANITIZE_BUILD)"
(cd "$NORVELLA_SANITIZE_BUILD" && ctest --output-on-failure --parallel "$(nproc)" "$@") || status=1

exit $status
