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
say "Raise an alert, list those not yet acknowledged, acknowledge it."
ctl alert send "Disk library space below 5%" --type 31 --client 4
ctl alert list --unacknowledged
ctl alert ack 4 --by backup-admins
say "The advisories that apply to client db01, and its log-monitoring parameters."
ctl advisory list --client 3
ctl logmon list 3

say "Create a client, look it up by name, and remove it again."
ctl client create --name web01 --host web01.lab.example.net --set platformType=1 \
  --set platform1.value=1 --set 'platform1.text=Linux x86-64'
ctl --json client lookup --name WEB01
ctl client remove 5
say "A client that still has application types is not removed: the server says what is left."
status=0
ctl client remove 3 || status=$?
echo "(exit status $status)"
say "Which replication writes to fs02, and an application id of db01 by its object."
ctl client replication-sets 4
ctl appid lookup --set number3=3 --set number4=20 --set number5=13 --set number6=103 \
  --set number7=1031 --set text0=SALESDB
say "Global parameters read like a configuration: one the fixture set, a built-in default"
say "nobody set, and a new value, which the server stores in canonical form."
ctl param get nAuditRetentionDays
ctl param get sTimeZone
ctl param set nMaxConcurrentJobs 025
say "A client group found by its name in any case; the domain changed in one field."
ctl group lookup 'linux machines'
ctl domain modify --description 'Lab domain, changed by the demo'

say "A path added to a subclient's content shows in the next read; it overlaps another subclient's."
ctl subclient content 1022
ctl subclient add-content 1022 'D:\Logs\IIS'
ctl subclient content 1022
ctl --json subclient content 1022 --detail
ctl subclient overlapping 1022

say "Instance SALESDB of the SQL Database type on db01: its record, its content, its properties."
ctl apptype lookup 3 20
ctl instance lookup 13
ctl instance content 13
ctl instance props 13

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
say "Put a file into the server's Temp/ folder and register it for client 3 (listed at the end)."
printf 'demo report\n' >"$run/report.txt"
ctl file put "$run/report.txt" --client 3 --text weekly

# A backup set that does not exist: the server's error text and exit status 1.
say "A backup set that does not exist: the server's error, exit status 1."
status=0
ctl bs lookup 999 || status=$?
echo "(exit status $status)"

stop_server
echo
echo "appmgrd stopped. Database: $run/data/appmgr.db"

# The server holds its database alone while it runs; stopped, its registrations are listed.
say "The files clients registered, read from the stopped server's database."
echo "\$ appmgrd --data $run/data --list-files"
"$appmgrd" --data "$run/data" --log-dir "$run/log" --list-files
echo
echo "Logs: $run/log/appmgrd.log (server), $run/log/appmgrctl.log (library)"
