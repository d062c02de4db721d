# shellcheck shell=bash
# The programs of the release build and the console's web server, for scripts that show them. $scratch is the folder of
# one run; the home folder is $scratch/home.
# shellcheck disable=SC2154  # the script that sources this file sets scratch

# shellcheck source-path=SCRIPTDIR
. "${BASH_SOURCE%/*}/wine.sh"

bin=$repo_root/build/mingw-release/bin

program() {
    local name=$1
    shift
    run_under_wine "$bin/$name.exe" "$@" 8>&-
}

# start_service NAME READY-LINE ARGS...: runs it in the background until it says that it serves.
start_service() {
    local name=$1 ready=$2 log=$scratch/$1.out
    shift 2
    program "$name" "$@" >"$log" 2>&1 &
    for _ in $(seq 300); do
        grep -qF "$ready" "$log" && return 0
        kill -0 $! 2>/dev/null || break
        sleep 0.1
    done
    cat "$log" >&2
    die "$name did not start"
}

free_port() {
    python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])'
}

# start_web_server PORT USER PASSWORD: the console at $console_address; sets web_server to the process.
start_web_server() {
    local port=$1 user=$2 password=$3 cgi=$scratch/home/web/console/cgi
    mkdir -p "$cgi"
    cp "$bin/cgiConsole.exe" "$bin/libCmdHndlrClient.dll" "$bin/libPerfWrbyPerfMonMgr.dll" "$cgi"
    # The web server hands a program the request's variables and no others.
    cat >"$cgi/console.cgi" <<END
#!/bin/sh
export HOME='$HOME' PATH='$PATH' WINEPREFIX='$WINEPREFIX'
exec '$repo_root/cmake/run-under-wine' '$cgi/cgiConsole.exe'
END
    chmod +x "$cgi/console.cgi"
    printf '%s:%s\n' "$user" "$password" >"$scratch/passwords"
    chmod 600 "$scratch/passwords"
    cat >"$scratch/lighttpd.conf" <<END
server.modules = ("mod_auth", "mod_authn_file", "mod_cgi")
server.bind = "127.0.0.1"
server.port = $port
server.document-root = "$scratch/home/web"
server.errorlog = "$scratch/lighttpd.out"
server.upload-dirs = ("$scratch")
cgi.assign = (".cgi" => "")
auth.backend = "plain"
auth.backend.plain.userfile = "$scratch/passwords"
auth.require = ("/" => ("method" => "basic", "realm" => "Warrenby console", "require" => "valid-user"))
END
    PATH=$PATH:/usr/sbin lighttpd -D -f "$scratch/lighttpd.conf" 8>&- &
    web_server=$!
    # shellcheck disable=SC2034  # read by the scripts that source this file
    console_address=http://127.0.0.1:$port/console/cgi/console.cgi
}

# stop_services: the web server, then the programs, then Wine.
stop_services() {
    [ -z "${web_server-}" ] || kill "$web_server" 2>/dev/null || true
    forget_home_folder
    stop_wine
}
