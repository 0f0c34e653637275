#!/usr/bin/env bash
# Sets up and builds Corvane if needed, then starts it with the given arguments.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
bash "$root/scripts/setup.sh"
exec "$root/build/bin/corvane" "$@"
