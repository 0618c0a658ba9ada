#!/usr/bin/env bash
# Installs every Debian package that building, testing, fuzzing, benchmarking and the demo
# need. Safe to run again; prints nothing when everything is already present.
set -euo pipefail

PACKAGES=(
  build-essential cmake ninja-build pkg-config
  clang libclang-rt-14-dev          # fuzzers (libFuzzer) and the ThreadSanitizer runtime
  googletest libgtest-dev libgmock-dev libbenchmark-dev
  libfmt-dev libspdlog-dev          # event log file sink
  libpugixml-dev                    # XML messages
  libsqlite3-dev sqlite3            # appmgrd store
  libxxhash-dev                     # the file-transfer checksum (header only)
  nlohmann-json3-dev                # appmgrd fixtures, appmgrctl --json
  libcli11-dev                      # command lines
  python3 procps                    # demo and CI helper scripts
)

missing=()
for p in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

SUDO=""
if [ "$(id -u)" -ne 0 ]; then
  if command -v sudo >/dev/null 2>&1; then SUDO="sudo"; else
    echo "install-deps: need root (or sudo) to install: ${missing[*]}" >&2
    exit 1
  fi
fi
echo "install-deps: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
