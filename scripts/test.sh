#!/usr/bin/env bash
# Sets everything up and runs every check: the core stays Qt-free, the Release build with all
# unit and GUI tests, the unit tests again under AddressSanitizer + UndefinedBehaviorSanitizer,
# a short libFuzzer run of each file reader, and clang-tidy's bugprone checks on the core.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
"$root/scripts/setup.sh"
# Each stage says how long the previous one took, so a slow stage is easy to spot.
stage() { echo "== $* (after ${SECONDS}s)"; }

stage "core must not use Qt"
if grep -rlE '#\s*include\s*[<"](Q[A-Za-z]+|qcustomplot)' core; then
  echo "core/ includes Qt headers (listed above)"; exit 1
fi

stage "Release build and tests"
"$root/scripts/build.sh" build/ci-release -DCMAKE_BUILD_TYPE=Release
(cd build/ci-release && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j "$(nproc)")

stage "Sanitizer build (ASan + UBSan) and unit tests"
"$root/scripts/build.sh" build/ci-asan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQUARVEL_SANITIZE=ON \
  -DQUARVEL_BUILD_GUI=OFF -DQUARVEL_BUILD_BENCH=OFF
(cd build/ci-asan && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
  ctest --output-on-failure -j "$(nproc)")

if [ -d fuzz ] && ls fuzz/*_fuzz.cpp >/dev/null 2>&1; then
  stage "libFuzzer runs of the readers"
  "$root/scripts/build.sh" build/ci-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
    -DQUARVEL_FUZZ=ON -DQUARVEL_BUILD_GUI=OFF -DQUARVEL_BUILD_TESTS=OFF -DQUARVEL_BUILD_BENCH=OFF
  "$root/scripts/fuzz.sh" build/ci-fuzz "${QUARVEL_FUZZ_SECONDS:-10}"
fi

if [ "${QUARVEL_SKIP_TIDY:-0}" != 1 ]; then
  stage "clang-tidy (bugprone) on the core"
  "$root/scripts/tidy.sh" build/ci-release
fi
echo "All checks passed in ${SECONDS}s."
