#!/usr/bin/env bash
# Runs every reader's libFuzzer target for a few seconds: scripts/fuzz.sh BUILD_DIR SECONDS.
# Seeds come from fuzz/seeds/<format>; new inputs go to a scratch folder that is removed after.
set -euo pipefail
build=$1; seconds=${2:-10}
root=$(cd "$(dirname "$0")/.." && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
for format in gdf xy std udf chi xrdml x_y txt cif uxd; do
  target=${format/x_y/xy_velm}_reader_fuzz
  mkdir -p "$scratch/$format"
  echo "-- $target (${seconds}s)"
  "$root/$build/fuzz/$target" -max_total_time="$seconds" -rss_limit_mb=2048 -max_len=65536 \
    -print_final_stats=0 "$scratch/$format" "$root/fuzz/seeds/$format" 2>"$scratch/$format.log" \
    || { tail -40 "$scratch/$format.log"; echo "fuzzing $target found a fault"; exit 1; }
done
