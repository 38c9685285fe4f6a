# shellcheck shell=bash disable=SC2034  # the lists are for whoever sources this
# SPDX-License-Identifier: GPL-3.0-or-later
# What `run` and `check` share: the Debian packages that the project needs, and how a preset is built.

build_packages=(g++ cmake ninja-build qt6-base-dev qt6-svg-dev libqcustomplot-dev libsqlite3-dev libicu-dev
    pkg-config libplist-dev libexpat1-dev clang libbpf-dev bpftool)
run_packages=(libqt6svg6 fonts-inter breeze-icon-theme)
wayland_packages=(qt6-wayland) # large, and of use only where there is no X server beside Wayland
# For a window on a machine without a display, read from outside.
desktop_packages=(xvfb openbox dbus-daemon at-spi2-core python3-pyatspi xdotool)
picture_packages=("${desktop_packages[@]}" imagemagick)
test_packages=("${desktop_packages[@]}" libgtest-dev python3 iproute2 nftables)

say() { printf '==> %s\n' "$*"; }

fail() {
    printf '%s\n' "$*" >&2
    exit 1
}

# missing_packages PACKAGE...: those that are not installed, one a line.
missing_packages() {
    local installed package
    # shellcheck disable=SC2016  # dpkg-query expands it
    installed=$(dpkg-query -W -f '${Package} ${db:Status-Status}\n' "$@" 2>/dev/null || true)
    for package in "$@"; do
        grep -qx "$package installed" <<<"$installed" || printf '%s\n' "$package"
    done
}

# as_root COMMAND...: with sudo where we are somebody else.
as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

# install_missing PACKAGE...: through apt; does nothing when all are there.
install_missing() {
    local missing apt=(env DEBIAN_FRONTEND=noninteractive apt-get)
    command -v apt-get >/dev/null ||
        fail "This is no Debian. Install what these Debian packages hold, then build with CMake: $*"
    mapfile -t missing < <(missing_packages "$@")
    [ ${#missing[@]} -gt 0 ] || return 0
    say "Installing ${missing[*]}"
    [ "$(id -u)" = 0 ] || command -v sudo >/dev/null ||
        fail "There is no sudo here. As root: apt-get update && apt-get install --no-install-recommends ${missing[*]}"
    as_root "${apt[@]}" update -qq
    as_root "${apt[@]}" install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# build_preset NAME: configures when nobody has yet; ninja knows what is out of date.
build_preset() {
    [ -f "build/$1/build.ninja" ] || cmake --preset "$1"
    cmake --build --preset "$1"
}
