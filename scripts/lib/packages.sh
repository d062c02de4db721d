# shellcheck shell=bash
# Debian binary packages: installs what is missing, and costs one dpkg-query when nothing is.

# shellcheck source-path=SCRIPTDIR
. "${BASH_SOURCE%/*}/common.sh"

# missing_packages PACKAGE...: prints those that are not installed, one a line.
missing_packages() {
    local installed
    # dpkg-query fails when it does not know one of the names: that is an answer here, not an error.
    installed=$(dpkg-query -W -f '${db:Status-Status} ${Package}\n' "$@" 2>/dev/null) || true
    local package
    for package in "$@"; do
        grep -qxF "installed $package" <<<"$installed" || printf '%s\n' "$package"
    done
}

# as_root COMMAND...: runs the command as root, with sudo when the user is not root.
as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        die "root is needed for: $*"
    fi
}

# refresh_package_lists LOG: apt's own lists. One unreachable archive among several is no reason to stop.
refresh_package_lists() {
    run_logged "$1" as_root apt-get update -q -o Acquire::Retries=3 ||
        say "some package lists could not be refreshed; going on with what is there"
}

# ensure_packages PACKAGE...: installs the missing ones. The package lists are refreshed only then,
# because that is the slow step and needs the network.
ensure_packages() {
    command -v apt-get >/dev/null || die "apt-get not found: these scripts prepare a Debian machine"
    local missing
    mapfile -t missing < <(missing_packages "$@")
    [ ${#missing[@]} -gt 0 ] || return 0

    local log=$deps_dir/packages.log
    say "installing Debian packages: ${missing[*]}"
    refresh_package_lists "$log"
    without_services run_logged "$log" as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get install -q -y -o Acquire::Retries=3 --no-install-recommends "${missing[@]}"
}

# without_services COMMAND...: runs it while Debian's policy forbids to start a service, unless the machine has a policy
# of its own. We want programs: a package that brings a server must not open its port here.
without_services() {
    local policy=/usr/sbin/policy-rc.d status=0
    if [ -e "$policy" ]; then
        "$@"
        return
    fi
    printf '#!/bin/sh\nexit 101\n' | as_root tee "$policy" >/dev/null
    as_root chmod 755 "$policy"
    "$@" || status=$?
    as_root rm -f "$policy"
    return "$status"
}
