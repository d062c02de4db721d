# shellcheck shell=bash
# A Wine session for one run of a script: the prefix, and one server that outlives the single programs
# (starting it anew for each would cost more than most tests).

# shellcheck source-path=SCRIPTDIR
. "${BASH_SOURCE%/*}/common.sh"

# Pipe names, registry and shared memory exist once in a prefix. The scripts have one of their own, whatever WINEPREFIX
# says, so that programs started by hand (cmake/run-under-wine) neither disturb them nor are ended by them.
export WINEPREFIX=$repo_root/build/wine-scripts

run_under_wine() { "$repo_root/cmake/run-under-wine" "$@"; }

# start_wine: takes the prefix for this script alone, fills it on first use, and starts its server; the server ends with
# the script.
start_wine() {
    local log=$WINEPREFIX.log
    mkdir -p "$WINEPREFIX"
    exec 8>"$WINEPREFIX.lock"
    take_lock 8 "another run that uses $WINEPREFIX"
    trap stop_wine EXIT
    trap 'exit 130' INT
    trap 'exit 143' TERM

    # A server that is there would refuse a second one. One without programs ends by itself in a second or two.
    if ! timeout 10 wineserver -w 8>&-; then
        say "ending what an interrupted run left in $WINEPREFIX"
        stop_wine
    fi
    rm -f "$log"
    # Services start with the prefix: those of an interrupted test would take the pipes.
    if grep -qiE 'Services\\\\Warrenby(Host|BackEnd)\]' "$WINEPREFIX/system.reg" 2>/dev/null; then
        say "the prefix has services of an interrupted run: making it anew"
        rm -rf "$WINEPREFIX"
    fi
    # system.reg is what Wine writes last: without it an earlier start was cut short.
    if [ ! -f "$WINEPREFIX/system.reg" ]; then
        say "preparing the Wine prefix $WINEPREFIX"
        run_logged "$log" run_under_wine wineboot --init 8>&-
        # The registry reaches the disk when the server ends.
        run_logged "$log" wineserver -w 8>&-
    fi
    run_logged "$log" wineserver -p 8>&-
    # Wine's own services start with the first program and keep its output open as long as the server
    # lives. Started here, they do not inherit a pipe whose reader waits for its end.
    run_logged "$log" run_under_wine wineboot 8>&-
}

# windows_path PATH: programs see the machine's root folder as drive Z.
windows_path() { printf 'Z:%s' "${1//\//\\}"; }

# set_home_folder FOLDER, forget_home_folder: the server's home folder, as the registry names it.
home_key='HKLM\SOFTWARE\CallowaySystems\Warrenby\service\Information'
set_home_folder() {
    run_under_wine reg add "$home_key" /v Local_Path /d "$(windows_path "$1")" /f >/dev/null 8>&- ||
        die "cannot set the home folder in the registry of $WINEPREFIX"
}
forget_home_folder() {
    run_under_wine reg delete "$home_key" /v Local_Path /f >/dev/null 2>&1 8>&- || true
}

# stop_wine: ends every program of our prefix and its server, and no other.
stop_wine() {
    wineserver -k >/dev/null 2>&1 || true
    wineserver -w || true
}
