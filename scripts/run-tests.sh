#!/usr/bin/env bash
# Installs everything, builds, and runs the whole test suite through CTest.
source "$(dirname "$0")/common.sh"
install_packages
build_all
cd "$NORVELLA_BUILD"
ctest --output-on-failure --parallel "$(nproc)" "$@"
