#!/usr/bin/env bash
# Measures the pattern readers against xylib's xyconv on the same 20000-point files.
# Installs xylib's command-line tool (Debian package libxy-bin) for the comparison only.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/setup.sh"
if ! command -v xyconv >/dev/null; then
  sudo=""; [ "$(id -u)" -ne 0 ] && sudo="sudo"
  $sudo apt-get install -y -qq libxy-bin >/dev/null
fi
"$root/scripts/build.sh" build/release -DCMAKE_BUILD_TYPE=Release -DQUARVEL_BUILD_GUI=OFF -DQUARVEL_BUILD_TESTS=OFF -DQUARVEL_BUILD_BENCH=ON
"$root/build/release/bench/pattern_readers_bench"
