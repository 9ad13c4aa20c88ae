#!/usr/bin/env bash
# Checks the sources with clang-tidy and cppcheck, and the scripts with shellcheck.
#
#   scripts/lint.sh [FILE...]
#
# FILE      only these sources, headers and scripts; default: all files of the repository
#
# .clang-tidy and scripts/cppcheck-suppressions.txt list the checks and why some are disabled.
# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

install_packages "${build_packages[@]}" libbenchmark-dev clang-tidy-14 cppcheck shellcheck git

files=("$@")
[[ ${#files[@]} -gt 0 ]] || mapfile -t files < <(git ls-files '*.cpp' '*.sh' '*.bash' .ci/run)
sources=() scripts=()
for file in "${files[@]}"; do
  case $file in
    *.cpp | *.h) sources+=("$file") ;;
    *) scripts+=("$file") ;;
  esac
done
status=0

if [[ ${#scripts[@]} -gt 0 ]]; then
  step "Checking ${#scripts[@]} scripts with shellcheck"
  shellcheck --external-sources "${scripts[@]}" || status=1
fi

if [[ ${#sources[@]} -gt 0 ]]; then
  step "Checking ${#sources[@]} sources with cppcheck"
  cppcheck --enable=warning,performance,portability,style --inline-suppr --error-exitcode=1 \
    --suppressions-list=scripts/cppcheck-suppressions.txt --library=googletest --std=c++20 \
    --language=c++ -I include -I . -I src/Qov/Ryx -I tools -I tests --quiet -j "$(nproc)" "${sources[@]}" || status=1

  step "Writing the compile commands for clang-tidy"
  build=build/lint
  cmake --preset dev -B "$build" -DRYXMERGE_BUILD_BENCH=ON >/dev/null

  # clang-tidy guesses the flags of sources that no build compiles, such as the examples.
  step "Checking ${#sources[@]} sources with clang-tidy"
  printf '%s\0' "${sources[@]}" |
    xargs -0 -n 1 -P "$(nproc)" clang-tidy-14 -p "$build" --quiet 2> >(
      grep -Ev '^[0-9]+ (warning|error).* generated\.$|^Error while processing' >&2 || true
    ) || status=1
fi

[[ $status -eq 0 ]] || echo "The checks found problems; see above." >&2
exit "$status"
