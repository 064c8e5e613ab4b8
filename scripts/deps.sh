# Sourced by the run and test scripts: installs the Debian 12 packages the console is built with.
ORVA_PACKAGES="cmake g++ ninja-build ccache qt6-base-dev qt6-base-dev-tools qt6-serialport-dev libqt6serialport6-dev
 libgl-dev xvfb xauth fonts-wqy-microhei"

install_deps() {
    missing=""
    for p in $ORVA_PACKAGES; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "ok installed" || missing="$missing $p"
    done
    [ -z "$missing" ] && return 0
    echo "Installing:$missing"
    sudo=""
    [ "$(id -u)" -eq 0 ] || sudo="sudo"
    $sudo apt-get update -q
    # shellcheck disable=SC2086
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -q --no-install-recommends $missing
}
