#!/usr/bin/env bash
# Runs the fuzz targets of this folder, built with clang in build-fuzz/ (made when missing).
#   tests/fuzz/run.sh TARGET [SECONDS]  one target, 60 s unless told; inputs that reach new code
#                                       are kept in tests/fuzz/corpus/TARGET
#   tests/fuzz/run.sh --all [SECONDS]   every target for SECONDS (20) each, the corpus left as it
#                                       is; this is what CI runs
# A crash, a leak, a sanitizer report or a wrong result fails the run and prints the input that
# caused it, which stays in build-fuzz/findings/ (give that file to the target to replay it).
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(cd "$here/../.." && pwd)
build=$root/build-fuzz
targets=()
for source in "$here"/*.cpp; do targets+=("$(basename "$source" .cpp)"); done

usage() {
    echo "usage: $0 TARGET [SECONDS] | --all [SECONDS]; targets: ${targets[*]}" >&2
    exit 2
}
[ $# -ge 1 ] || usage

bash "$root/scripts/setup.sh" --fuzz
build() {
    if [ ! -f "$build/build.ninja" ]; then
        local launcher=()
        command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
        # Asserts stay on; -O1 keeps the build short and the runs fast.
        cmake -S "$root" -B "$build" -G Ninja -DCMAKE_CXX_COMPILER=clang++ "${launcher[@]}" \
            -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG="-g -O1" -DCORVANE_FUZZ=ON -DCORVANE_GUI=OFF \
            -DCORVANE_WERROR=ON >/dev/null
    fi
    # Paths relative to the checkout, so that another clone finds the same compiled files.
    CCACHE_BASEDIR=$root cmake --build "$build" --target "$@"
}

export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1}
# The file targets write a file or two per input; in memory that is four times faster.
[ -z "${TMPDIR:-}" ] && [ -w /dev/shm ] && export TMPDIR=/dev/shm
mkdir -p "$build/findings"

# fuzz TARGET SECONDS LOG CORPUS...: new inputs go to the first corpus folder.
fuzz() {
    local target=$1 seconds=$2 log=$3
    shift 3
    local options=(-max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1
                   -artifact_prefix="$build/findings/$target-")
    [ -f "$here/$target.dict" ] && options+=(-dict="$here/$target.dict")
    rm -f "$build/findings/$target"-*
    local status=0
    "$build/bin/fuzz_$target" "${options[@]}" "$@" >"$log" 2>&1 || status=$?
    local runs cov
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    cov=$(grep -o 'cov: [0-9]*' "$log" | tail -1 | cut -d' ' -f2)
    echo "$target: ${runs:-?} runs in $seconds s, ${cov:-?} edges covered"
    if [ "$status" -ne 0 ]; then
        echo "FAULT in $target (exit status $status):"
        grep -v '^#' "$log" | tail -60
        for finding in "$build/findings/$target"-*; do
            [ -f "$finding" ] || continue
            echo "Input $finding (replay: $build/bin/fuzz_$target $finding):"
            od -A d -c "$finding" | head -40
        done
        return 1
    fi
}

if [ "$1" = --all ]; then
    seconds=${2:-20}
    build fuzz_all
    scratch=$(mktemp -d)
    trap 'rm -rf "$scratch"' EXIT
    failed=0
    for target in "${targets[@]}"; do
        mkdir -p "$scratch/$target"
        fuzz "$target" "$seconds" "$scratch/$target.log" "$scratch/$target" \
            "$here/corpus/$target" || failed=$((failed + 1))
    done
    echo "fuzz: $((${#targets[@]} - failed)) passed, $failed failed"
    exit $((failed > 0))
fi

target=$1
[[ " ${targets[*]} " == *" $target "* ]] || usage
build "fuzz_$target"
mkdir -p "$here/corpus/$target"
fuzz "$target" "${2:-60}" "$build/$target.log" "$here/corpus/$target"
