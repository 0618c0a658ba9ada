#!/usr/bin/env bash
# Installs a build into a temporary prefix, as a packager would, and uses it as a user would:
# a program built with find_package(appmgrnet) and one built with pkg-config each look up a
# backup set on the installed appmgrd; the installed appmgrctl finds the installed library by
# itself; the man pages, completion, unit and package files are where they belong, and every
# installed header compiles on its own.
#
#   install_test.sh SOURCE_DIR BUILD_DIR CXX_COMPILER GENERATOR LIBDIR BINDIR SBINDIR
#
# Everything goes into one temporary folder, removed at the end; the server is stopped on any
# exit.
set -euo pipefail

source_dir=$1 build_dir=$2 cxx=$3 generator=$4 libdir=$5 bindir=$6 sbindir=$7
work=$(mktemp -d "${TMPDIR:-/tmp}/appmgrnet-install-XXXXXX")
prefix=$work/prefix
server_pid=""
cleanup() {
  if [[ -n $server_pid ]] && kill -0 "$server_pid" 2>/dev/null; then
    kill -TERM "$server_pid" 2>/dev/null || true
    wait "$server_pid" 2>/dev/null || true
  fi
  rm -rf "$work"
}
trap cleanup EXIT

fail() {
  echo "install test: $*" >&2
  exit 1
}
expect_file() {
  [[ -e $prefix/$1 ]] || fail "not installed: $1"
}

cmake --install "$build_dir" --prefix "$prefix" >"$work/install.log" ||
  fail "cmake --install failed: $(cat "$work/install.log")"

for f in "$libdir/libappmgrnet.so" "$libdir/libappmgrnet.so.1" "$libdir/pkgconfig/appmgrnet.pc" \
  "$libdir/cmake/appmgrnet/appmgrnetConfig.cmake" \
  "$libdir/cmake/appmgrnet/appmgrnetConfigVersion.cmake" \
  include/appmgr/AppMgrNet.h include/appmgr/AppMgrVersion.h include/appmgr/BSInterface.h \
  "$bindir/appmgrctl" "$sbindir/appmgrd" share/man/man1/appmgrctl.1 share/man/man8/appmgrd.8 \
  share/bash-completion/completions/appmgrctl share/bash-completion/completions/appmgrd \
  lib/systemd/system/appmgrd.service share/doc/appmgrnet/LICENSE \
  share/doc/appmgrnet/CHANGELOG.md share/doc/appmgrnet/docs/protocol.md \
  share/doc/appmgrnet/examples/appmgrnet.ini; do
  expect_file "$f"
done
[[ $(readlink "$prefix/$libdir/libappmgrnet.so") == libappmgrnet.so.1 ]] ||
  fail "libappmgrnet.so does not link to the SONAME"
grep -q '^\.SH OPTIONS' "$prefix/share/man/man8/appmgrd.8" || fail "appmgrd.8 has no options"
grep -q 'max\\-frame\\-bytes' "$prefix/share/man/man8/appmgrd.8" ||
  fail "appmgrd.8 was not made from appmgrd --help"

# Every installed header compiles on its own against the installed tree alone, in the C++17 the
# package promises its users: a public header that includes a file that is not installed (or
# needs a newer language) would break every consumer that includes it.
headers=0
while IFS= read -r header; do
  printf '#include "%s"\n' "${header#"$prefix/include/"}" >"$work/header.cc"
  "$cxx" -std=c++17 -fsyntax-only -I"$prefix/include" "$work/header.cc" \
    >"$work/header.log" 2>&1 || fail "$header does not compile on its own: $(cat "$work/header.log")"
  headers=$((headers + 1))
done < <(find "$prefix/include" -name '*.h' | sort)
((headers > 0)) || fail "no headers installed"

# The installed server, on a free port, with the demo data.
"$prefix/$sbindir/appmgrd" --data "$work/data" --port 0 --port-file "$work/port" \
  --fixture "$source_dir/server/fixtures/demo.json" --log-dir "$work/log" >"$work/appmgrd.out" &
server_pid=$!
for _ in $(seq 1 100); do
  [[ -s $work/port ]] && break
  kill -0 "$server_pid" 2>/dev/null || fail "appmgrd exited: $(cat "$work/appmgrd.out")"
  sleep 0.1
done
[[ -s $work/port ]] || fail "appmgrd did not listen within 10 s"
port=$(cat "$work/port")
printf '[Controlhost]\nsHOSTNAME = 127.0.0.1:%s\nsCLIENTNAME = ch01\n[EventManager]\nsLogDirectory = %s\n' \
  "$port" "$work/log" >"$work/appmgrnet.ini"
export APPMGR_SETTINGS=$work/appmgrnet.ini
unset APPMGR_LIBRARY APPMGR_SETTINGS_OVERLAY LD_LIBRARY_PATH

expected="backup set 102: defaultBackupSet (7)"
check_consumer() {  # what, program
  local out
  out=$("$2") || fail "$1: the consumer failed: $out"
  [[ $out == *"library 1."* && $out == *"$expected"* ]] || fail "$1: unexpected output: $out"
}

# 1. find_package(appmgrnet)
cmake -S "$source_dir/tests/packaging/consumer" -B "$work/cmake-consumer" -G "$generator" \
  -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_PREFIX_PATH="$prefix" >"$work/cmake.log" 2>&1 ||
  fail "find_package(appmgrnet) failed: $(cat "$work/cmake.log")"
cmake --build "$work/cmake-consumer" >>"$work/cmake.log" 2>&1 ||
  fail "building against appmgrnet::appmgrnet failed: $(cat "$work/cmake.log")"
check_consumer "find_package" "$work/cmake-consumer/consumer"

# 2. pkg-config
export PKG_CONFIG_PATH=$prefix/$libdir/pkgconfig
[[ $(pkg-config --modversion appmgrnet) == 1.* ]] || fail "pkg-config does not know appmgrnet"
# shellcheck disable=SC2046
"$cxx" -std=c++17 -o "$work/pc-consumer" "$source_dir/tests/packaging/consumer/consumer.cc" \
  $(pkg-config --cflags --libs appmgrnet) -Wl,-rpath,"$(pkg-config --variable=libdir appmgrnet)" \
  2>"$work/pc.log" || fail "building with pkg-config failed: $(cat "$work/pc.log")"
check_consumer "pkg-config" "$work/pc-consumer"

# 3. The installed appmgrctl finds the library beside its prefix, and needs no settings file
#    with --host.
version=$("$prefix/$bindir/appmgrctl" --version) || fail "appmgrctl --version: $version"
[[ $version == *"library $prefix/$libdir/libappmgrnet.so.1 (libappmgrnet 1."* ]] ||
  fail "appmgrctl --version did not load the installed library: $version"
lookup=$(APPMGR_SETTINGS=$work/none.ini "$prefix/$bindir/appmgrctl" --host "127.0.0.1:$port" \
  --json bs lookup 102) || fail "appmgrctl --host: $lookup"
[[ $lookup == *'"name":"defaultBackupSet"'* ]] || fail "appmgrctl --host printed: $lookup"

echo "install test: find_package, pkg-config and the installed appmgrctl all reached appmgrd"
