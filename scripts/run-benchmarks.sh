#!/usr/bin/env bash
# Runs every benchmark program of the given build folder (default: build), one after another,
# so their figures come from one run on one machine.
set -euo pipefail
build=${1:-build}
for bin in "$build"/bench/bench_*; do
  [ -x "$bin" ] || continue
  echo "== $(basename "$bin")"
  "$bin" --benchmark_min_time=0.2 "${@:2}"
done
