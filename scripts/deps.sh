# Sourced by the run and test scripts: installs the Debian 12 packages the console is built with.
# One real package name a line, as dpkg records it once installed: a virtual name (one that another
# package only provides) is never "installed" and would send every run to apt-get.
ORVA_PACKAGES="
cmake
g++
ninja-build
ccache
qt6-base-dev
qt6-base-dev-tools
qt6-serialport-dev
qt6-tools-dev
qt6-l10n-tools
libgl-dev
xvfb
xauth
fonts-wqy-microhei
clang
libclang-rt-14-dev
llvm-14
"

# True when dpkg holds the package, or some installed package provides that name.
orva_have_package() {
    dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q "ok installed" && return 0
    dpkg-query -W -f='${Status} ${Provides}\n' 2>/dev/null | grep "ok installed" |
        sed 's/([^)]*)//g' | tr ', ' '\n\n' | grep -qx "$1"
}

install_deps() {
    missing=""
    for p in $ORVA_PACKAGES; do
        orva_have_package "$p" || missing="$missing $p"
    done
    [ -z "$missing" ] && return 0
    echo "Installing:$missing"
    sudo=""
    [ "$(id -u)" -eq 0 ] || sudo="sudo"
    $sudo apt-get update -q
    # shellcheck disable=SC2086
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -q --no-install-recommends $missing
}
