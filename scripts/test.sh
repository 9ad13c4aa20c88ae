#!/usr/bin/env bash
# Installs missing packages, builds the programs and runs all tests.
# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

install_packages "${build_packages[@]}"
build release
run_tests release

step "All tests passed. The programs are build/release/bin/RyxMerge and build/release/bin/ryx."
