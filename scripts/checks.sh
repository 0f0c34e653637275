#!/usr/bin/env bash
# The checks CI runs besides the tests (after scripts/test.sh, which set up and built build/):
# clang-tidy over the program's sources, then the program without windows, built with the address
# and undefined-behaviour sanitizers in build-sanitized/, and its tests.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

cmake "$root/build" -DCMAKE_EXPORT_COMPILE_COMMANDS=ON >/dev/null
run-clang-tidy -p "$root/build" -j "$(nproc)" -quiet "$root/(engine|views|shell|tools)/.*\.cpp\$" \
    >"$root/build/clang-tidy.log" 2>&1 || {
    grep -E -A3 'error:' "$root/build/clang-tidy.log" | head -80
    echo "clang-tidy found faults (all of them in build/clang-tidy.log)"
    exit 1
}

sanitized=$root/build-sanitized
flags="-g -O1 -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer"
if [ ! -f "$sanitized/build.ninja" ]; then
    cmake -S "$root" -B "$sanitized" -G Ninja -DCORVANE_GUI=OFF -DCORVANE_WERROR=ON \
        -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG="$flags" \
        -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=address,undefined" >/dev/null
fi
cmake --build "$sanitized"
ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
    ctest --test-dir "$sanitized" --output-on-failure -j2
