#!/usr/bin/env bash
# Throughput benchmark of Corvane's headless mode against curl, wget and aria2c on loopback.
# Installs what is missing, builds Corvane (Release, build-bench/) unless CORVANE_BIN is given,
# then runs bench/bench.py. See bench/README.md.
#
#   bash bench/run.sh [options of bench.py]
#   env: ROUNDS (5), BENCH_DIR (/tmp/corvane-bench), CORVANE_BIN (and BENCH_REVISION, its
#        label in the report), SCENARIOS (a,b,c,d; also e,f,g),
#        CLIENTS (each scenario's own: corvane,curl,wget in a-d; corvane-c1,corvane-c4,
#        corvane-c16,aria2c-x4,aria2c-x16,curl in e; corvane-c1,corvane-c4 in f; corvane in g),
#        WGET_PARALLEL (1; 0 skips wget in c),
#        BENCH_TIMEOUT (300 s per run), BENCH_QUIET_WAIT (30 s), PROFILE (0; 1 adds an
#        strace profile of Corvane)
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(dirname "$here")

# --- packages (only the missing ones) ---------------------------------------------------
packages=(nginx-light python3 python3-pyftpdlib curl wget aria2 time x11-utils)
if [ -z "${CORVANE_BIN:-}" ]; then
    # The build dependencies, as scripts/setup.sh lists them (setup.sh itself builds build/,
    # which another build may be using, so only its list is taken).
    mapfile -t build_packages < <(sed -n '/^packages=(/,/)/p' "$root/scripts/setup.sh" |
        sed 's/packages=(//; s/)//' | tr ' ' '\n' | sed '/^$/d')
    ((${#build_packages[@]})) || build_packages=(cmake g++ ninja-build qt6-base-dev libgl-dev)
    packages+=("${build_packages[@]}")
fi
[ "${PROFILE:-0}" = 1 ] && packages+=(strace)
missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if ((${#missing[@]})); then
    echo "Installing: ${missing[*]}" >&2
    sudo=""
    [ "$(id -u)" -ne 0 ] && sudo=sudo
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends \
        "${missing[@]}" >/dev/null
fi

# --- Corvane ---------------------------------------------------------------------------
if [ -n "${CORVANE_BIN:-}" ]; then
    bin=$CORVANE_BIN
    revision=${BENCH_REVISION:-"binary given in CORVANE_BIN"}
else
    # The commit the sources are at when the build starts (no optional locks: the index is
    # left alone), and whether the sources differ from it.
    git=(git --no-optional-locks -C "$root")
    revision=$("${git[@]}" rev-parse --short HEAD 2>/dev/null || echo unknown)
    "${git[@]}" diff-index --quiet HEAD -- engine shell tools views CMakeLists.txt 2>/dev/null ||
        revision+=" + uncommitted changes"
    build="$root/build-bench"
    echo "Building Corvane (Release) in $build" >&2
    cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
    cmake --build "$build" --target corvane >/dev/null
    bin="$build/bin/corvane"
fi

# --- run -------------------------------------------------------------------------------
# bench.py stops its servers itself; this trap is the second line: whatever pid it recorded
# and is still an nginx or pyftpdlib process is stopped, and the temporary folder removed.
state=$(mktemp -d /tmp/corvane-bench-state.XXXXXX)
cleanup() {
    if [ -f "$state/servers.pids" ]; then
        while read -r pid; do
            if grep -qaE 'nginx|pyftpdlib' "/proc/$pid/cmdline" 2>/dev/null; then
                kill "$pid" 2>/dev/null || true
            fi
        done <"$state/servers.pids"
    fi
    rm -rf "$state"
}
trap cleanup EXIT

# In the background so that a signal to this script reaches bench.py at once (as SIGTERM,
# which it handles like Ctrl-C: the running client and the servers are stopped).
/usr/bin/python3 "$here/bench.py" --corvane "$bin" --revision "$revision" --state "$state" "$@" &
bench=$!
trap 'kill -TERM "$bench" 2>/dev/null || true' INT TERM HUP
set +e
while :; do
    wait "$bench"
    rc=$?
    kill -0 "$bench" 2>/dev/null || break
done
exit "$rc"
