# Shell functions that get a Debian machine ready; source this file from a bash script.
# shellcheck shell=bash

# Runs a command as root: directly, or through sudo where the caller is somebody else.
as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        env DEBIAN_FRONTEND=noninteractive "$@"
    elif command -v sudo >/dev/null; then
        sudo env DEBIAN_FRONTEND=noninteractive "$@"
    else
        echo "error: not root and sudo is not installed; run as root: $*" >&2
        return 1
    fi
}

# pinned RULES COMMAND...: runs the command with ` -o Dir::Etc::Preferences=FILE` appended, where FILE
# holds the rules and lives only as long.
pinned() {
    local rules=$1 file status=0
    shift
    file=$(mktemp)
    chmod 644 "$file"
    printf '%s\n' "$rules" >"$file"
    "$@" -o "Dir::Etc::Preferences=$file" || status=$?
    rm -f "$file"
    return "$status"
}

# apt_install PACKAGE...: installs, and never removes anything. A mirror's security index can be out
# of step, for one architecture more than for another; libraries of two architectures must have the
# same version, so then nothing resolves. The two further tries, each for its own call only, take
# versions from the main archive: first where nothing newer is installed, then even so.
apt_install() {
    local try=(as_root apt-get install -y -qq --no-install-recommends --no-remove "$@") log
    log=$(mktemp)
    if "${try[@]}" >"$log" 2>&1 ||
        pinned $'Package: *\nPin: release l=Debian-Security\nPin-Priority: 400' \
            "${try[@]}" >>"$log" 2>&1 ||
        pinned $'Package: *\nPin: release l=Debian\nPin-Priority: 1001' \
            "${try[@]}" --allow-downgrades >>"$log" 2>&1; then
        rm -f "$log"
        return 0
    fi
    cat "$log" >&2
    rm -f "$log"
    return 1
}

# need PACKAGE...: installs those of the packages that are missing; does nothing, and asks for no
# rights, when all are there. An update of the package lists that ends with an error, as one broken
# source among many causes it, stops nothing: only the installation itself may fail.
need() {
    local package missing=()
    for package in "$@"; do
        if ! dpkg-query -W -f '${db:Status-Status}\n' "$package" 2>/dev/null |
            grep -x installed >/dev/null; then
            missing+=("$package")
        fi
    done
    if [ "${#missing[@]}" -eq 0 ]; then return 0; fi
    echo "== installing ${missing[*]}"
    as_root apt-get update -qq || echo "warning: apt-get update failed; trying to install anyway" >&2
    if ! apt_install "${missing[@]}"; then
        echo "error: could not install: ${missing[*]}" >&2
        return 1
    fi
}
