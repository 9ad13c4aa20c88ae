#!/usr/bin/env bash
# Runs all tests and counts which lines and branches they reach.
#
#   scripts/coverage.sh
#
# Prints a row for each source, and leaves pages that show each line in build/coverage/pages.
# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

install_packages "${build_packages[@]}" gcovr
build coverage
export GCOV_ERROR_FILE=/dev/null  # what killed programs left behind is no news
find build/coverage -name '*.gcda' -delete
# What is left of sources that moved would be counted, too.
ninja -C build/coverage -t cleandead >/dev/null
find build/coverage -name '*.gcno' | while read -r notes; do
  [[ -e ${notes%.gcno}.o ]] || rm "$notes"
done
run_tests coverage

step "Adding up"
pages=build/coverage/pages
mkdir -p "$pages"
# Branches that only exceptions take, most of them the compiler's own, say nothing.
gcovr --root . --object-directory build/coverage -j "$(nproc)" \
  --filter '(app|container|diagnostics|include|src|terminal|tools)/' \
  --exclude-throw-branches --exclude-unreachable-branches \
  --html-details "$pages/index.html" --json build/coverage/coverage.json >/dev/null
for metric in '' --branches; do
  gcovr --root . --add-tracefile build/coverage/coverage.json --txt $metric
done
