#!/usr/bin/env bash
# Installs the Debian 12 packages that Orvane builds, tests and runs with.
# Idempotent: asks apt only for what is missing, and refreshes the package
# lists only when something is. Runs as root (or with sudo) and never reads
# standard input.
set -euo pipefail

packages=(
  # build, tests, benchmarks
  build-essential cmake ninja-build ccache pkg-config
  libgtest-dev libgmock-dev libbenchmark-dev
  # JSON, command line
  nlohmann-json3-dev libcli11-dev
  # desktop UI, drawing, text, SVG, images, audio output
  qt6-base-dev qt6-svg-dev qt6-image-formats-plugins qt6-multimedia-dev
  qtkeychain-qt6-dev libpoppler-qt6-dev
  # media
  libavformat-dev libavcodec-dev libavutil-dev libswscale-dev
  libswresample-dev libavdevice-dev
  # assistant: HTTP client, and the loopback server its tests talk to
  libcurl4-openssl-dev libcpp-httplib-dev
  # renderer threads
  libtbb-dev
  # fonts that common font names resolve to
  fonts-urw-base35 fonts-liberation2 fonts-dejavu-core
  # fuzzing the parsers
  clang libclang-rt-14-dev
  # headless windows for the UI tests
  xvfb xauth
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "Installing missing packages: ${missing[*]}"
sudo=""
if [ "$(id -u)" -ne 0 ]; then
  sudo="sudo"
fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -q </dev/null
$sudo apt-get install -y -q --no-install-recommends "${missing[@]}" </dev/null
