# Sourced by scripts/demo, scripts/test and scripts/bench: install what the
# build needs on a Debian 12 machine, then configure and build into build/.
set -euo pipefail

MORVANE_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
MORVANE_BUILD="$MORVANE_ROOT/build"
# netbase holds the service and protocol tables the network layer looks names up
# in; Hamlib's rotctl and socat are the real peers of the remote-control tests;
# dpkg-dev and file let cpack find the Debian package's dependencies.
MORVANE_PACKAGES=(cmake make g++ pkg-config qt6-base-dev qt6-serialport-dev libnova-dev
                  libgtest-dev libgmock-dev libbenchmark-dev locales fonts-dejavu-core
                  netbase libhamlib-utils socat dpkg-dev file pngquant)

morvane_sudo() {
    if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

morvane_install() {
    local missing=()
    for p in "${MORVANE_PACKAGES[@]}"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
    done
    if [ ${#missing[@]} -gt 0 ]; then
        echo "Installing: ${missing[*]}"
        morvane_sudo apt-get update -qq
        morvane_sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${missing[@]}" >/dev/null
    fi
    # The tests check that numbers stay in the C form on a German desktop.
    if ! locale -a 2>/dev/null | grep -qi '^de_DE\.utf-\?8$'; then
        echo "Generating the de_DE.UTF-8 locale"
        morvane_sudo sed -i 's/^# *de_DE.UTF-8 UTF-8/de_DE.UTF-8 UTF-8/' /etc/locale.gen
        grep -q '^de_DE.UTF-8 UTF-8' /etc/locale.gen || echo 'de_DE.UTF-8 UTF-8' | morvane_sudo tee -a /etc/locale.gen >/dev/null
        morvane_sudo locale-gen >/dev/null
    fi
}

morvane_build() {
    cmake -S "$MORVANE_ROOT" -B "$MORVANE_BUILD" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
    cmake --build "$MORVANE_BUILD" -j"$(nproc)"
}
