# shellcheck shell=bash
# Configuring and building one of the CMake presets.

# shellcheck source-path=SCRIPTDIR
. "${BASH_SOURCE%/*}/common.sh"

# configure_preset PRESET
configure_preset() {
    local log=$repo_root/build/$1.configure.log
    rm -f "$log"
    (cd "$repo_root" && run_logged "$log" cmake --preset "$1")
}

# build_preset PRESET [TARGET...]: configures and builds; what the compiler complains of is shown, and how far it is on a
# terminal.
build_preset() {
    local preset=$1 targets=() quiet=()
    shift
    [ $# -eq 0 ] || targets=(--target "$@")
    [ -t 1 ] || quiet=(-- --quiet)
    (
        mkdir -p "$repo_root/build"
        exec 7>"$repo_root/build/$preset.lock"
        take_lock 7 "another run that builds $preset"
        say "building $preset${*:+: $*}"
        [ -e "$repo_root/build/$preset/.ninja_log" ] || say "the first build of $preset takes ten minutes or more"
        configure_preset "$preset"
        cd "$repo_root" && cmake --build --preset "$preset" "${targets[@]}" "${quiet[@]}"
    )
}
