#!/usr/bin/env bash
# Installs the Debian 12 packages the engine, its tools and its tests build
# with, when they are missing. Safe to run again: it installs nothing twice.
set -euo pipefail

packages=(
  build-essential cmake pkg-config
  libcurl4-openssl-dev libboost-json1.81-dev libboost-url1.81-dev libre2-dev libssl-dev
  libcpp-httplib-dev libcli11-dev
  googletest libgtest-dev libgmock-dev libbenchmark-dev
  python3 doxygen
)

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
