#!/usr/bin/env bash
# Installs what is missing, builds the Debian package into build/package and checks it.
# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

install_packages "${build_packages[@]}" dpkg-dev lintian
build release RyxMerge ryx qov_shared qov_static

step "Packing"
rm -rf build/package
cpack --config build/release/CPackConfig.cmake -G DEB -B build/package/staging
mv build/package/staging/*.deb build/package
rm -rf build/package/staging

step "Checking the package"
package=$(echo build/package/*.deb)
dpkg-deb --info "$package"
# As root lintian only warns that it should not run so.
lintian --fail-on error --allow-root "$package"

step "The package is $package. Install it with: apt install ./$package"
