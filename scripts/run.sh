#!/usr/bin/env bash
# Sets everything up, builds QUARVEL in Release and starts it on the bundled example pattern.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/setup.sh"
"$root/scripts/build.sh" build/release -DCMAKE_BUILD_TYPE=Release -DQUARVEL_BUILD_TESTS=OFF -DQUARVEL_BUILD_BENCH=OFF
example=("$root"/examples/*.xy)
args=()
[ -e "${example[0]}" ] && args=("${example[0]}")
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
  echo "No display found: starting QUARVEL inside a virtual X server (xvfb-run)."
  exec xvfb-run -a "$root/build/release/gui/quarvel" "${args[@]}"
fi
exec "$root/build/release/gui/quarvel" "${args[@]}"
