#!/bin/sh
# Builds the Debian package from the install rules and checks it with lintian: build-package/orvaplccom_*.deb
# usage: scripts/package.sh [VERSION]
set -eu
cd "$(dirname "$0")/.."
. scripts/deps.sh
# The package is made with dpkg's own tools and checked by lintian.
ORVA_PACKAGES="$ORVA_PACKAGES help2man lintian dpkg-dev"
install_deps

version=${1:-}
cmake -S . -B build-package -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr -DORVA_PACKAGE=ON \
    ${version:+-DORVA_PACKAGE_VERSION=$version} > /dev/null
cmake --build build-package -j "$(nproc)" --target ORVAPLCCOM orvaplccfg orvaplcsim orva_man orva_lang
rm -f build-package/orvaplccom_*.deb
(cd build-package && cpack -G DEB > /dev/null)
deb=$(ls build-package/orvaplccom_*.deb)
echo "Package: $deb"
# Errors fail the build; warnings are printed for the record.
lintian --fail-on error --suppress-tags-from-file packaging/lintian-overrides.txt "$deb"
echo "lintian: no errors"
