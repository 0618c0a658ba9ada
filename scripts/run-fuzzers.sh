#!/usr/bin/env bash
# Runs every fuzzer built in the given build folder for FUZZ_SECS seconds (default 20) on a
# scratch copy of its seed corpus (fuzz/corpus/<name without _fuzz>). Fails on the first crash;
# the crashing input is left in fuzz/artifacts/.
set -euo pipefail
build=${1:-build-fuzz}
secs=${FUZZ_SECS:-20}
root=$(cd "$(dirname "$0")/.." && pwd)
mkdir -p "$root/fuzz/artifacts"
for bin in "$build"/fuzz/*_fuzz; do
  [ -x "$bin" ] || continue
  name=$(basename "$bin" _fuzz)
  work=$(mktemp -d)
  [ -d "$root/fuzz/corpus/$name" ] && cp -r "$root/fuzz/corpus/$name/." "$work/"
  echo "fuzz: $name for ${secs}s"
  "$bin" -max_total_time="$secs" -max_len=65536 -rss_limit_mb=2048 -timeout=10 \
    -artifact_prefix="$root/fuzz/artifacts/$name-" -print_final_stats=1 "$work" 2>&1 | tail -n 4
  rm -rf "$work"
done
echo "fuzz: all fuzzers ran clean"
