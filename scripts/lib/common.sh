# shellcheck shell=bash
# Shared by every script of this folder: the place of the repository, messages, failures.
# Sourced, never run.

set -euo pipefail

repo_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
# shellcheck disable=SC2034  # read by the scripts that source this file
deps_dir=$repo_root/build/deps

say() { printf '%s: %s\n' "${0##*/}" "$*"; }

die() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

# usage_if_asked ARGS...: prints the comment block at the head of the running script on -h or --help.
usage_if_asked() {
    case ${1-} in
    -h | --help)
        sed -n '2,/^$/s/^# \{0,1\}//p' "$0"
        exit 0
        ;;
    esac
}

# refuse TEXT: the command line is wrong.
refuse() {
    printf '%s: %s (see --help)\n' "${0##*/}" "$1" >&2
    exit 2
}

# refuse_arguments ARGS...: for the scripts that take none.
refuse_arguments() { [ $# -eq 0 ] || refuse "unexpected argument: $1"; }

# need_value ARGS...: the first of the arguments that are left is an option, and its value must follow.
need_value() { [ $# -ge 2 ] || refuse "$1 needs a value"; }

# take_lock DESCRIPTOR WHAT: locks the open file; says what it waits for while another run holds it.
take_lock() {
    flock -n "$1" && return
    say "waiting for $2"
    flock "$1"
}

# run_logged LOG COMMAND...: appends the command's output to LOG; shows its tail only when it fails.
run_logged() {
    local log=$1
    shift
    mkdir -p "$(dirname "$log")"
    printf '+ %s\n' "$*" >>"$log"
    "$@" >>"$log" 2>&1 </dev/null && return 0
    printf '%s: failed: %s\n---- last lines of %s\n' "${0##*/}" "$*" "$log" >&2
    tail -n 40 "$log" >&2
    return 1
}
