#!/usr/bin/env bash
# Installs the Debian packages Corvane needs (only those missing) and builds it into build/.
# With --fuzz it installs what the fuzz targets need as well and builds nothing: tests/fuzz/run.sh
# builds its own folder.
set -euo pipefail
fuzz=0
[ "${1:-}" = --fuzz ] && fuzz=1
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# Build: Qt and its Spanish translations, and the tools that check the code's format and faults. Tests: local servers, certificates, an RTF reader, an X
# server with a screen reader's view (the accessibility bus) for the end-to-end runs of the
# windows, the desktop's own checks of the launcher and the software centre's entry, a clipboard
# another program writes to, and Chromium, driven through its DevTools protocol, for the browser
# extension; two stock FTP servers (one installed, the other unpacked below: they cannot be
# installed side by side).
packages=(cmake g++ ninja-build clang-format clang-tidy qt6-base-dev qt6-qpa-plugins qt6-multimedia-dev qt6-webengine-dev
          qt6-svg-dev qt6-translations-l10n libgl-dev fonts-dejavu-core
          nginx-light openssl unrtf xvfb xauth xdotool
          dbus-daemon at-spi2-core python3-pyatspi desktop-file-utils appstream
          xclip chromium python3-websocket vsftpd)
# Fuzzing: clang with its sanitizer and libFuzzer runtimes, and a compiler cache for its builds.
((fuzz)) && packages+=(clang libclang-rt-14-dev ccache)
missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if ((${#missing[@]})); then
    echo "Installing: ${missing[*]}"
    sudo=""
    [ "$(id -u)" -ne 0 ] && sudo=sudo
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends \
        "${missing[@]}" >/dev/null
fi
((fuzz)) && exit 0

if [ ! -x "$root/build/proftpd/usr/sbin/proftpd" ]; then
    mkdir -p "$root/build/proftpd"
    (cd "$root/build/proftpd" && apt-get download proftpd-core >/dev/null &&
        dpkg-deb -x proftpd-core_*.deb . && rm proftpd-core_*.deb)
fi

werror=OFF
[ -n "${CI:-}" ] && werror=ON
if [ ! -f "$root/build/build.ninja" ]; then
    cmake -S "$root" -B "$root/build" -G Ninja -DCORVANE_WERROR=$werror >/dev/null
else
    cmake "$root/build" -DCORVANE_WERROR=$werror >/dev/null
fi
cmake --build "$root/build"
