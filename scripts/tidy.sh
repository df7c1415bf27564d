#!/usr/bin/env bash
# Runs clang-tidy's bugprone checks over the core sources of a configured build tree.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-build/ci-release}
files=$(find "$root/core" -name '*.cpp' | sort)
echo "$files" | xargs -P "$(nproc)" -n 8 clang-tidy -p "$root/$build" --quiet --warnings-as-errors='*' \
  2> >(grep -v -E '^[0-9]+ warnings? generated|Suppressed|Use -header-filter|^$' >&2)
