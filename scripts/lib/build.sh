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

# build_preset PRESET [TARGET...]: configures and builds; what the compiler complains of is shown.
build_preset() {
    local preset=$1 targets=()
    shift
    [ $# -eq 0 ] || targets=(--target "$@")
    say "building $preset${*:+: $*}"
    configure_preset "$preset"
    (cd "$repo_root" && cmake --build --preset "$preset" "${targets[@]}" -- --quiet)
}
