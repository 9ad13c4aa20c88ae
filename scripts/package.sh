#!/usr/bin/env bash
# Installs missing tools, builds the Debian packages into build/packages and checks them.
# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

# lintian depends on many packages. It runs only if it is installed, and in CI.
packages=("${build_packages[@]}" dpkg-dev file)
[[ -z "${CI:-}" ]] || packages+=(lintian)
install_packages "${packages[@]}"
build package

step "Packing"
rm -rf build/packages
cpack --config build/package/CPackConfig.cmake -G DEB -B build/packages/staging
mv build/packages/staging/*.deb build/packages
rm -rf build/packages/staging

step "Checking the packages"
for package in build/packages/*.deb; do
  dpkg-deb --info "$package"
done
if command -v lintian >/dev/null; then
  # lintian warns if it runs as root.
  lintian --fail-on error,warning --allow-root build/packages/*.deb
fi

step "The packages are in build/packages. Install the programs with: apt install ./build/packages/ryxmerge_*.deb"
