#!/usr/bin/env bash
# Installs the Debian 12 packages that envline needs to build, test and run.
# Idempotent: when everything is present it prints nothing and touches nothing.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  libgtest-dev libgmock-dev libbenchmark-dev
  libocct-data-exchange-dev libtbb-dev libgeos-dev libcgal-dev
  python3-ezdxf python3-openpyxl
  libxlsxwriter-dev
  qt6-base-dev qt6-svg-dev fonts-wqy-microhei qt6-translations-l10n xvfb xauth
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
SUDO=""
[ "$(id -u)" -ne 0 ] && SUDO="sudo"
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
