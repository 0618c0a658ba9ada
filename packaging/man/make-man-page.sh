#!/bin/sh
# Writes a man page from a program's own --help, so the page lists exactly the options and
# commands the program has:
#
#   make-man-page.sh PROGRAM HELP-OPTION NAME SECTION TITLE VERSION SUMMARY EXTRA OUTPUT
#
# The help text (CLI11's layout: a description, "Usage:", then "Options:", "Subcommands:" and
# "Positionals:" blocks of "  NAME  description" entries) becomes NAME, SYNOPSIS, DESCRIPTION
# and one section per block; EXTRA, a roff file, adds what --help does not say (exit status,
# environment, files, see also). The page carries no date, so a build is reproducible.
set -eu

program=$1 helpOption=$2 name=$3 section=$4 title=$5 version=$6 summary=$7 extra=$8 output=$9

help=$("$program" "$helpOption") || {
  echo "make-man-page.sh: $program $helpOption failed" >&2
  exit 1
}

# roff escapes: backslashes, hyphens (so options print as minus signs and can be searched), and
# a leading '.' or "'" that would read as a request.
escape() {
  sed -e 's/\\/\\e/g' -e 's/-/\\-/g' -e "s/^\\([.']\\)/\\\\\\&\\1/"
}

description=$(printf '%s\n' "$help" | sed -n '1,/^Usage: /p' | sed '$d' | escape)
usage=$(printf '%s\n' "$help" | sed -n 's/^Usage: //p' | escape)
body=$(printf '%s\n' "$help" | sed '1,/^Usage: /d' | grep -v '^Exit status: ' | escape | sed -E \
  -e 's/^(Options|Subcommands|Positionals):$/.SH \U\1/' \
  -e 's/^\.SH SUBCOMMANDS$/.SH COMMANDS/' \
  -e 's/^\.SH POSITIONALS$/.SH ARGUMENTS/' \
  -e 's/^([a-z][a-z\\-]*)$/.SS \1/' \
  -e 's/^ +([A-Z][A-Za-z ]*):$/.PP\n\\fI\1:\\fR/' \
  -e 's/^ {2,6}([^ ].*[^ ]|[^ ]) {2,}([^ ].*)$/.TP\n\\fB\1\\fR\n\2/' \
  -e 's/^ {2,6}(\\-.*[^ ])$/.TP\n\\fB\1\\fR/' \
  -e 's/^ +//' \
  -e 's/^$/.PP/')

upper=$(printf '%s' "$name" | tr '[:lower:]' '[:upper:]')
{
  printf '.TH %s %s "" "appmgrnet %s" "%s"\n' "$upper" "$section" "$version" "$title"
  printf '.SH NAME\n%s \\- %s\n' "$name" "$summary"
  printf '.SH SYNOPSIS\n.B %s\n' "$usage"
  printf '.SH DESCRIPTION\n%s\n' "$description"
  printf '%s\n' "$body"
  cat "$extra"
} >"$output.tmp"
mv "$output.tmp" "$output"
