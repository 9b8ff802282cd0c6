# Shared by the set-up scripts: install what the build needs, then configure and build.
set -euo pipefail

NORVELLA_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
NORVELLA_BUILD=${NORVELLA_BUILD:-$NORVELLA_ROOT/build}
NORVELLA_SANITIZE_BUILD=${NORVELLA_SANITIZE_BUILD:-$NORVELLA_ROOT/build-sanitize}

install_packages() {
    local sudo=""
    [ "$(id -u)" -eq 0 ] || sudo="sudo"
    local packages
    packages=$(grep -vE '^\s*(#|$)' "$NORVELLA_ROOT/scripts/packages.txt" | tr '\n' ' ')
    export DEBIAN_FRONTEND=noninteractive
    $sudo apt-get update -qq
    # shellcheck disable=SC2086
    $sudo apt-get install -y -qq --no-install-recommends $packages >/dev/null
}

build_all() {
    cmake -S "$NORVELLA_ROOT" -B "$NORVELLA_BUILD" -DCMAKE_BUILD_TYPE=RelWithDebInfo
    cmake --build "$NORVELLA_BUILD" --parallel "$(nproc)"
}

# The same sources in Debug with AddressSanitizer and UndefinedBehaviorSanitizer,
# in a folder of their own: Qt's assertions and the sanitizers catch what the
# optimised build lets pass (a use after free, a continuation on a dead object).
build_sanitized() {
    cmake -S "$NORVELLA_ROOT" -B "$NORVELLA_SANITIZE_BUILD" -DCMAKE_BUILD_TYPE=Debug -DNORVELLA_SANITIZE=ON
    cmake --build "$NORVELLA_SANITIZE_BUILD" --parallel "$(nproc)"
}
