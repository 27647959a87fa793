# Sourced by run and test: installs what is missing and builds. Says in one line what could not be done.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

fail() {
    echo "$(basename "$0"): $*" >&2
    exit 1
}

# install_packages LIST...: the Debian packages named in scripts/packages-LIST that are not there yet.
install_packages() {
    command -v dpkg-query > /dev/null || fail "this machine has no Debian packages; install by hand what scripts/packages-* name"
    local wanted missing sudo=()
    wanted=$(cat "${@/#/$root/scripts/packages-}" | grep -v '^#')
    missing=$(comm -23 <(sort -u <<< "$wanted") \
        <(dpkg-query -W -f '${db:Status-Status} ${Package}\n' 2> /dev/null | sed -n 's/^installed //p' | sort -u))
    [ -n "$missing" ] || return 0
    if [ "$(id -u)" != 0 ]; then
        command -v sudo > /dev/null || fail "not root and no sudo: install these packages first:" $missing
        sudo=(sudo)
    fi
    echo "installing:" $missing >&2
    export DEBIAN_FRONTEND=noninteractive
    "${sudo[@]}" apt-get -q update >&2 || fail "apt-get update failed; is the network there?"
    # shellcheck disable=SC2086
    "${sudo[@]}" apt-get -q install -y --no-install-recommends $missing >&2 || fail "apt-get could not install" $missing
}

# build PRESET [TARGET...]
build() {
    local preset=$1
    shift
    cd "$root" || exit 1
    # Configuring prints some hundred lines; they matter only when it fails.
    local log
    log=$(cmake --preset "$preset" 2>&1) || {
        echo "$log" >&2
        fail "cmake could not configure the preset $preset"
    }
    cmake --build --preset "$preset" ${1:+--target "$@"} >&2 || fail "the preset $preset does not build"
}
