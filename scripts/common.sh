# What the scripts share. To be sourced, in a shell with `set -eu`.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

say() { printf '%s\n' "$*" >&2; }
die() {
    say "$*"
    exit 1
}

# usage: tells how the script is used, as its head does, and ends it.
usage() {
    sed -n '2,/^[^#]/s/^# \?//p' "$0" >&2
    exit 2
}

# install_packages GROUP...: the Debian packages of scripts/packages.GROUP that are missing.
install_packages() {
    local group package installed missing=() as_root=()
    command -v apt-get >/dev/null ||
        die "This sets itself up on Debian 12 only: apt-get is missing. See scripts/packages.* for what is needed."
    # With what they stand for: one package may bring what another is for.
    installed=$(dpkg-query -W -f '${db:Status-Status} ${Package} ${Provides}\n' |
        sed -n 's/([^)]*)//g; s/,/ /g; s/^installed //p' | tr -s ' ' '\n')
    for group in "$@"; do
        for package in $(sed 's/#.*//' "$root/scripts/packages.$group"); do
            grep -qxF "$package" <<<"$installed" || missing+=("$package")
        done
    done
    [ ${#missing[@]} -eq 0 ] && return
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null ||
            die "These packages are missing, and installing them takes root or sudo: ${missing[*]}"
        as_root=(sudo)
    fi
    say "Installing: ${missing[*]}"
    "${as_root[@]}" apt-get update -q >&2 || die "apt-get could not fetch the package lists."
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends --no-remove \
        "${missing[@]}" >&2 || die "apt-get could not install: ${missing[*]}"
}

# build PRESET [TARGET...]: configures once, builds what is out of date.
build() {
    local preset=$1 log
    shift
    cd "$root"
    log=$(cmake --preset "$preset" 2>&1) || die "$log"
    if [ $# -gt 0 ]; then set -- --target "$@"; fi
    cmake --build --preset "$preset" "$@" >&2 || die "The build failed."
    cd - >/dev/null
}

# install_locked: the npm packages that package-lock.json of this folder lists, where it is another one than before.
install_locked() {
    cmp -s package-lock.json node_modules/.installed && return
    npm ci --silent >&2 || die "npm could not install what package-lock.json lists."
    cp package-lock.json node_modules/.installed
}
