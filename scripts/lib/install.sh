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
    if ! as_root apt-get install -y -qq --no-install-recommends "${missing[@]}"; then
        echo "error: could not install: ${missing[*]}" >&2
        return 1
    fi
}
