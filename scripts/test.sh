#!/usr/bin/env bash
# Sets up and builds Corvane if needed, then runs the whole test suite.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
bash "$root/scripts/setup.sh"
ctest --test-dir "$root/build" --output-on-failure -j2
