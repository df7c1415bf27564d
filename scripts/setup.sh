#!/usr/bin/env bash
# Installs the Debian 12 packages QUARVEL needs to build, run and test. Safe to run again:
# it only asks apt for what is missing.
set -euo pipefail

packages=(
  cmake ninja-build g++ clang clang-tidy ccache
  qt6-base-dev libgl1-mesa-dev libqcustomplot-dev fonts-dejavu-core
  libcli11-dev libfmt-dev gemmi-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  xvfb xauth
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done

if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  sudo=""
  [ "$(id -u)" -ne 0 ] && sudo="sudo"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}" >/dev/null
fi
