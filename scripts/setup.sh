# Sourced by scripts/demo, scripts/test, scripts/bench and scripts/fuzz:
# install what the build needs on a Debian 12 machine, then configure and
# build into build/ (or, sanitized, into build-asan/).
set -euo pipefail

MORVANE_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
MORVANE_BUILD="$MORVANE_ROOT/build"
# netbase holds the service and protocol tables the network layer looks names up
# in; Hamlib's rotctl and socat are the real peers of the remote-control tests;
# dpkg-dev and file let cpack find the Debian package's dependencies.
MORVANE_PACKAGES=(cmake make g++ pkg-config qt6-base-dev qt6-serialport-dev libnova-dev
                  libgtest-dev libgmock-dev libbenchmark-dev locales fonts-dejavu-core
                  netbase libhamlib-utils socat dpkg-dev file pngquant)
# The sanitized build and the fuzzers need clang and its runtimes (libFuzzer,
# AddressSanitizer, UndefinedBehaviorSanitizer); the scripts that build it add
# these to the list before installing.
MORVANE_SANITIZER_PACKAGES=(clang libclang-rt-14-dev)
MORVANE_ASAN_BUILD="$MORVANE_ROOT/build-asan"

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

# A rebuild after a switch of branch costs little with ccache; it is used
# when present and never required.
morvane_launcher() {
    if command -v ccache >/dev/null; then
        echo -DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache
    fi
}

morvane_build() {
    cmake -S "$MORVANE_ROOT" -B "$MORVANE_BUILD" -DCMAKE_BUILD_TYPE=RelWithDebInfo $(morvane_launcher) >/dev/null
    cmake --build "$MORVANE_BUILD" -j"$(nproc)"
}

# Everything built by clang with AddressSanitizer and UndefinedBehaviorSanitizer,
# any fault ending the program at once, and the fuzz programs linked with
# libFuzzer. The suite's programs carry the fuzzers' coverage hooks too, which
# costs little and lets one tree serve both. Arguments name targets to build.
morvane_build_sanitized() {
    local flags="-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer -fsanitize=fuzzer-no-link"
    # Line tables are all a fault's stack needs, and -O1 builds in half the
    # time of -O2 with full debug information while running nearly as fast.
    local speed="-O1 -gline-tables-only -DNDEBUG"
    cmake -S "$MORVANE_ROOT" -B "$MORVANE_ASAN_BUILD" -DCMAKE_BUILD_TYPE=RelWithDebInfo $(morvane_launcher) \
          -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
          -DCMAKE_C_FLAGS="$flags" -DCMAKE_CXX_FLAGS="$flags" \
          -DCMAKE_C_FLAGS_RELWITHDEBINFO="$speed" -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="$speed" \
          -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=address,undefined" \
          -DMORVANE_FUZZ_ENGINE=ON -DMORVANE_BENCH=OFF >/dev/null
    local targets=()
    for t in "$@"; do targets+=(--target "$t"); done
    cmake --build "$MORVANE_ASAN_BUILD" -j"$(nproc)" "${targets[@]}"
}

# How the sanitized programs report: stop at the first fault with its stack.
# Qt, fontconfig and the toolkit's plugins keep allocations to the end of the
# process, so leaks are left to the memory benchmark rather than judged here.
morvane_sanitizer_env() {
    export ASAN_OPTIONS="detect_leaks=0:abort_on_error=1:halt_on_error=1"
    export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
}
