# Functions that the scripts of this repository share. Source this file, do not run it.
# shellcheck shell=bash
#
# It changes to the top folder of the repository. It stops the script at the first command that
# fails and prints the step.

set -Eeuo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

current_step="start"
trap 'echo "FAILED: $current_step" >&2' ERR

# The packages that the programs and their tests need.
# shellcheck disable=SC2034  # used by the scripts
build_packages=(
  g++ cmake ninja-build pkg-config
  zlib1g-dev libdeflate-dev libxxhash-dev libboost-filesystem-dev libboost-system-dev
  libcli11-dev libfmt-dev nlohmann-json3-dev
  libpng-dev libfreetype-dev fonts-dejavu-core
  libgtest-dev libgmock-dev
)

# The tests in tests/export read files with these packages. They are skipped if one is missing.
# shellcheck disable=SC2034
reader_packages=(python3 python3-numpy python3-vtk9 python3-meshio)

# scripts/cluster.sh runs these.
# shellcheck disable=SC2034
slurm_packages=(slurmctld slurmd slurm-client munge)

# The test in tests/page opens pages with these packages. It is skipped if one is missing.
# shellcheck disable=SC2034
browser_packages=(chromium chromium-driver python3-selenium)

step() {
  current_step="$*"
  printf '\n==> %s\n' "$*"
}

is_installed() {
  [[ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" == installed ]]
}

as_root() {
  if [[ $EUID -eq 0 ]]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    echo "This needs root rights: $*" >&2
    return 1
  fi
}

# install_packages PACKAGE...: installs the packages that are missing.
install_packages() {
  step "Checking the packages"
  if ! command -v dpkg-query >/dev/null; then
    echo "Not a Debian system. Install these packages or their equivalents: $*"
    return
  fi
  local package missing=()
  for package in "$@"; do
    is_installed "$package" || missing+=("$package")
  done
  if [[ ${#missing[@]} -eq 0 ]]; then
    echo "All packages are installed."
    return
  fi
  step "Installing ${missing[*]}"
  as_root apt-get update -q
  as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get install -q -y --no-install-recommends "${missing[@]}"
}

# build PRESET [TARGET...]: configures and builds into build/PRESET.
build() {
  local preset=$1
  shift
  step "Configuring the $preset build"
  cmake --preset "$preset"
  step "Building $preset${*:+: $*}"
  cmake --build --preset "$preset" --parallel "$(nproc)" ${@:+--target "$@"}
}

# run_tests PRESET [OPTION...]: the options are those of ctest.
run_tests() {
  step "Running the tests of the $1 build"
  ctest --preset "$1" --output-on-failure --no-tests=error -j 2 "${@:2}"
}
