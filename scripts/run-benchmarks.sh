#!/usr/bin/env bash
# Runs every benchmark program of the given build folder (default: build), one after another,
# so their figures come from one run on one machine.
set -euo pipefail
build=${1:-build}
# Unless the caller chose settings, the benchmarks log into the build folder at level 1.
if [ -z "${APPMGR_SETTINGS:-}" ]; then
  mkdir -p "$build/bench-logs"
  printf '[EventManager]\nsLogDirectory = %s\nnDebugLevel = 1\n' "$(cd "$build" && pwd)/bench-logs" \
    >"$build/bench-logs/settings.ini"
  export APPMGR_SETTINGS="$build/bench-logs/settings.ini"
fi
for bin in "$build"/bench/bench_*; do
  [ -x "$bin" ] || continue
  echo "== $(basename "$bin")"
  "$bin" --benchmark_min_time=0.2 "${@:2}"
done
