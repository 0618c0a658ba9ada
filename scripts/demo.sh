#!/usr/bin/env bash
# The main job, end to end: start appmgrd on a fresh SQLite database filled from the demo
# fixture, then read and change it through libappmgrnet.so with appmgrctl, and stop the server.
#
#   scripts/demo.sh [BUILD_DIR]        (default: build; `make demo` builds it first)
#
# Everything it writes goes under demo-run/ (recreated on every run; DEMO_RUN_DIR names another
# folder): the database, the server's log, the settings file the library reads and the
# library's own log.
set -euo pipefail

root="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-$root/build}"
run="${DEMO_RUN_DIR:-$root/demo-run}"
appmgrd="$build/server/appmgrd"
appmgrctl="$build/tools/appmgrctl"

for program in "$appmgrd" "$appmgrctl"; do
  if [[ ! -x "$program" ]]; then
    echo "demo: $program is missing; run 'make build' first" >&2
    exit 1
  fi
done

rm -rf "$run"
mkdir -p "$run/log"

server_pid=""
stop_server() {
  if [[ -n "$server_pid" ]] && kill -0 "$server_pid" 2>/dev/null; then
    kill -TERM "$server_pid" 2>/dev/null || true
    wait "$server_pid" 2>/dev/null || true
  fi
  server_pid=""
}
trap stop_server EXIT
trap 'exit 130' INT TERM

"$appmgrd" --data "$run/data" --port 0 --port-file "$run/port" \
  --fixture "$root/server/fixtures/demo.json" --log-dir "$run/log" --log-level 2 &
server_pid=$!

# The port file is written once the server listens; give it up to 10 seconds.
for _ in $(seq 1 100); do
  [[ -s "$run/port" ]] && break
  if ! kill -0 "$server_pid" 2>/dev/null; then
    echo "demo: appmgrd exited before listening; see $run/log/appmgrd.log" >&2
    exit 1
  fi
  sleep 0.1
done
if [[ ! -s "$run/port" ]]; then
  echo "demo: appmgrd did not listen within 10 seconds; see $run/log/appmgrd.log" >&2
  exit 1
fi
port="$(cat "$run/port")"

cat >"$run/appmgrnet.ini" <<EOF
[Controlhost]
sHOSTNAME = 127.0.0.1:$port
sCLIENTNAME = controlhost
sINSTALLDIRECTORY = $run/data

[EventManager]
sLogDirectory = $run/log
nDebugLevel = 4
EOF

say() {
  echo
  echo "## $*"
}

ctl() {
  echo
  echo "\$ appmgrctl $*"
  "$appmgrctl" --settings "$run/appmgrnet.ini" "$@"
}

echo "appmgrd is listening on 127.0.0.1:$port (pid $server_pid)"

say "Read backup set 102, its stores and its properties."
ctl bs lookup 102
ctl bs stores 102
ctl bs props 102
say "Rename it and change its value; a new process reads the change back from the server."
ctl bs update 102 --name nightly-db --value 9
ctl bs lookup 102
say "Set two properties (one changed, one new) and read them back as JSON."
ctl bs set-props 102 nRetentionDays=45 sOwner=dba
ctl --json bs props 102
say "Ask whether a new replication pair would clash with an existing one, and who owns the set."
ctl bs pair-conflict 105 'D:\Data' /replica/new
ctl bs client-id 105
say "List the clients of a group by host name, and one client's backup sets, deleted ones too."
ctl list clients --group 1 --host-names
ctl list backupsets --client 3 --deleted

# One process, many calls: the second lookup of 101 is answered by the library's message cache,
# which the counters at the end show.
cat >"$run/batch.txt" <<'EOF'
# lines are commands as on the command line
bs lookup 101
bs lookup 101
bs stores 102
stats
EOF
say "One process, four commands: the repeated lookup of 101 is answered from the library's"
say "message cache, so the counters show 3 calls of which 1 skipped the network."
ctl batch "$run/batch.txt"

say "Snapshot records and the mailbox delegates of G1 4, kept positionally by the server."
ctl snapshot list
ctl delegate list --selector 4
say "Put a file into the server's Temp/ folder and register it for client 3; the server lists it."
printf 'demo report\n' >"$run/report.txt"
ctl file put "$run/report.txt" --client 3 --text weekly
echo
echo "\$ appmgrd --data $run/data --list-files"
"$appmgrd" --data "$run/data" --log-dir "$run/log" --list-files

# A backup set that does not exist: the server's error text and exit status 1.
say "A backup set that does not exist: the server's error, exit status 1."
status=0
ctl bs lookup 999 || status=$?
echo "(exit status $status)"

stop_server
echo
echo "appmgrd stopped. Database: $run/data/appmgr.db"
echo "Logs: $run/log/appmgrd.log (server), $run/log/appmgrctl.log (library)"
