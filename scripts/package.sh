#!/usr/bin/env bash
# Installs what is missing, builds the Debian packages into build/packages and checks them.
# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

# lintian brings many packages with it, so it checks only where it is installed, and in CI.
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
  # As root lintian warns that it should not run so.
  lintian --fail-on error,warning --allow-root build/packages/*.deb
fi

step "The packages are in build/packages. Install the programs with: apt install ./build/packages/ryxmerge_*.deb"
