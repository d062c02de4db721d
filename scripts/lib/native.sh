# shellcheck shell=bash
# The native build of the pure modules under sanitizers (tests/fuzz).

# shellcheck source-path=SCRIPTDIR
. "${BASH_SOURCE%/*}/packages.sh"

build=$repo_root/build/fuzz

# build_native TARGET...
build_native() {
    local log=$build.log
    ensure_packages clang-14 libclang-rt-14-dev libjsoncpp-dev libpugixml-dev libsqlite3-dev libsoci-dev libboost-dev cmake ninja-build pkg-config python3
    rm -f "$log"
    say "building for this machine: $*"
    run_logged "$log" cmake -S "$repo_root/tests/fuzz" -B "$build" -G Ninja -DCMAKE_CXX_COMPILER=clang++-14
    run_logged "$log" cmake --build "$build" --target "$@"
}
