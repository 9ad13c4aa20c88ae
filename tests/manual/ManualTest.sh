#!/usr/bin/env bash
# ManualTest.sh SOURCE_DIR BIN_DIR: compares the manual pages with what the programs accept, and
# runs their examples.
set -euo pipefail
source_dir=$1
export PATH="$2:$PATH"
manuals=$source_dir/docs/man
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

# expect_same WHAT MANUAL PROGRAM: two lists of words in any order.
expect_same() {
  local differences
  if ! differences=$(diff <(sort -u <<<"$2") <(sort -u <<<"$3")); then
    printf '%s (< the manual, > the program):\n%s\n' "$1" "$differences"
    failures=$((failures + 1))
  fi
}

# The text of a section: from its heading to the next one of its kind.
section() { awk -v kind="$2" -v name="$3" '
  $1 == kind || $1 == ".Sh" { inside = $1 == kind && substr($0, 5) == name; next } inside' "$1"; }
documented_options() { grep -oP '^\.It Fl( [a-z] ,| [a-z] Fl)?\K.*' | grep -oP '(?<=-)[a-z][a-z-]+' | grep -vx help || true; }
documented_variables() { grep -oP '^\.It Ev \K\w+' "$1"; }
# The options column of a help text. Leaves out --help.
offered_options() { grep -oP '^  (-\w,)?--[^ ]*' | grep -oP '(?<=--)[a-z-]+' | grep -vx help || true; }
examples() { section "$1" .Sh EXAMPLES | awk '/^\.Bd/ { inside = 1; next } /^\.Ed/ { inside = 0 } inside'; }

page=$manuals/RyxMerge.1
options=$(documented_options <"$page")
expect_same "Options of RyxMerge" "$options" \
  "$(grep -ohP '"--\K[a-z-]+(?=")' "$source_dir/app/MergeOptions.h")"
expect_same "Completed options of RyxMerge" "$options" \
  "$(grep -oP '(?<=--)[a-z][a-z-]+' "$source_dir/completions/RyxMerge.bash")"
expect_same "Environment of RyxMerge" "$(documented_variables "$page")" \
  "$(grep -ohP '"\K[A-Z]+_[A-Z_]+(?=")' "$source_dir"/{app,container,src/Qov/Ryx/*}/*.cpp)"

page=$manuals/ryx.1
subcommands=$(ryx --help | awk '/^Subcommands:/ { inside = 1; next } inside && /^  [a-z]/ { print $1 } inside && /^$/ { exit }')
expect_same "Subcommands of ryx" "$(sed -n 's/^\.Ss ryx //p' "$page")" "$subcommands"
expect_same "Options of ryx" "$(section "$page" .Sh DESCRIPTION | documented_options)" \
  "$(ryx --help | offered_options)"
for subcommand in $subcommands; do
  expect_same "Options of ryx $subcommand" \
    "$(section "$page" .Ss "ryx $subcommand" | documented_options)" \
    "$(ryx "$subcommand" --help | offered_options)"
done

cd "$work"
export PELORIN_TEMP_PATH=$work
for page in "$manuals"/*.1; do
  if ! examples "$page" >examples.sh || [[ ! -s examples.sh ]] || ! bash -ex examples.sh >log 2>&1; then
    printf 'The examples of %s fail:\n%s\n' "${page##*/}" "$(tail -20 log)"
    failures=$((failures + 1))
  fi
  if command -v mandoc >/dev/null && ! mandoc -T lint -W warning "$page"; then
    failures=$((failures + 1))
  fi
done
exit $((failures > 0))
