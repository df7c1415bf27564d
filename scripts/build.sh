#!/usr/bin/env bash
# Configures and builds one build tree: scripts/build.sh DIR [cmake options...]
set -euo pipefail
dir=$1; shift
root=$(cd "$(dirname "$0")/.." && pwd)
cmake -S "$root" -B "$root/$dir" -G Ninja "$@" >/dev/null
cmake --build "$root/$dir" -j "$(nproc)"
