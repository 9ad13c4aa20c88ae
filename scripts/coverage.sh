#!/usr/bin/env bash
# Runs all tests and counts the lines and branches that they reach.
#
#   scripts/coverage.sh
#
# Prints a row for each source, and writes pages that show each line to build/coverage/pages.
# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

install_packages "${build_packages[@]}" gcovr
build coverage
export GCOV_ERROR_FILE=/dev/null  # killed programs leave damaged files
find build/coverage -name '*.gcda' -delete
# Removes the files of deleted sources, because they would be counted as well.
ninja -C build/coverage -t cleandead >/dev/null
find build/coverage -name '*.gcno' | while read -r notes; do
  [[ -e ${notes%.gcno}.o ]] || rm "$notes"
done
run_tests coverage

step "Counting lines and branches"
pages=build/coverage/pages
mkdir -p "$pages"
# Branches that only exceptions take are left out, because the compiler adds most of them.
gcovr --root . --object-directory build/coverage -j "$(nproc)" \
  --filter '(app|container|diagnostics|include|src|terminal|tools)/' \
  --exclude-throw-branches --exclude-unreachable-branches \
  --html-details "$pages/index.html" --json build/coverage/coverage.json >/dev/null
for metric in '' --branches; do
  gcovr --root . --add-tracefile build/coverage/coverage.json --txt $metric
done
