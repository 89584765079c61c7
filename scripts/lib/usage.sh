# How a script answers questions about itself; source this file and call one of these first.
# shellcheck shell=bash

describe() { sed -n '2,/^[^#]/s/^# \{0,1\}//p' "$0"; }

# help_for "$@": where --help is among the arguments, prints what stands at the script's top and ends.
help_for() {
    case " $* " in
    *' --help '* | *' -h '*) describe; exit 0 ;;
    esac
}

# bad_argument ARGUMENT: refuses it, and prints the same.
bad_argument() {
    echo "error: unknown argument '$1'" >&2
    describe >&2
    exit 2
}

# takes_nothing "$@": for a script without arguments.
takes_nothing() {
    help_for "$@"
    [ $# -eq 0 ] || bad_argument "$1"
}

# ctest_options "$@": refuses what ctest does not know; by itself it would ignore that.
ctest_options() {
    local argument previous='' known
    known=" $(ctest --help | tr '\n,=' '   ') "
    for argument; do
        if [[ $argument = -* ]]; then
            [[ $known = *" ${argument%%=*} "* || $argument =~ ^-j[0-9]+$ ]] || bad_argument "$argument"
        elif [[ $previous != -* ]]; then
            bad_argument "$argument"
        fi
        previous=$argument
    done
}
