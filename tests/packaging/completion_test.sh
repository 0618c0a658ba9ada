#!/usr/bin/env bash
# The bash completion scripts against the built programs: the words they offer come from the
# programs' --help, so a change of that layout must not silently leave users without completion.
#
#   completion_test.sh SOURCE_DIR APPMGRCTL APPMGRD
set -euo pipefail
source_dir=$1 appmgrctl=$2 appmgrd=$3
# shellcheck source=/dev/null
source "$source_dir/packaging/bash-completion/appmgrctl"
# shellcheck source=/dev/null
source "$source_dir/packaging/bash-completion/appmgrd"

failures=0
expect() {  # function, expected words (space-separated, in order), then the command line words
  local function=$1 expected=$2
  shift 2
  COMP_WORDS=("$@")
  COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
  COMPREPLY=()
  "$function" 2>/dev/null
  if [[ "${COMPREPLY[*]}" != "$expected" ]]; then
    echo "completion of '${COMP_WORDS[*]}': expected '$expected', got '${COMPREPLY[*]}'" >&2
    failures=$((failures + 1))
  fi
}

expect _appmgrctl "bs batch" "$appmgrctl" b
expect _appmgrctl "pair-conflict" "$appmgrctl" --json bs pa
expect _appmgrctl "lookup" "$appmgrctl" --host h:1 --timeout 5 bs loo
expect _appmgrctl "--replace" "$appmgrctl" bs set-props 101 --rep
expect _appmgrctl "--timeout" "$appmgrctl" --ti
expect _appmgrctl "--keep-going" "$appmgrctl" batch --keep
expect _appmgrctl "" "$appmgrctl" --host ""
expect _appmgrd "--max-file-mb --max-frame-bytes" "$appmgrd" --max-f
expect _appmgrd "journal" "$appmgrd" --log-to j
expect _appmgrd "--check" "$appmgrd" --data /tmp --ch
exit $((failures > 0))
