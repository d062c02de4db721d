# shellcheck shell=bash
# The third-party libraries: cross-built, static, Release, into one prefix where find_package looks.

# shellcheck source-path=SCRIPTDIR
. "${BASH_SOURCE%/*}/debian-source.sh"

deps_prefix=$deps_dir/install
toolchain_file=$repo_root/cmake/mingw-w64.cmake

# One row a library: Debian package that carries the source, options of its CMake build.
dependency_names=(googletest jsoncpp sqlite3 soci cli11 benchmark curl pugixml) # soci needs sqlite3
declare -A dependency_source=(
    [googletest]=/usr/src/googletest # a binary package that contains the source
    [jsoncpp]=libjsoncpp
    [sqlite3]=sqlite3
    [soci]=soci
    [cli11]=cli11
    [benchmark]=benchmark
    [curl]=curl
    [pugixml]=pugixml
)
declare -A dependency_options=(
    [googletest]="-DBUILD_GMOCK=ON -DINSTALL_GTEST=ON"
    [jsoncpp]="-DBUILD_STATIC_LIBS=ON -DBUILD_OBJECT_LIBS=OFF -DJSONCPP_WITH_TESTS=OFF
        -DJSONCPP_WITH_POST_BUILD_UNITTEST=OFF"
    [sqlite3]=""
    [soci]="-DSOCI_CXX11=ON -DSOCI_SHARED=OFF -DSOCI_TESTS=OFF -DSOCI_EMPTY=OFF -DWITH_BOOST=OFF -DWITH_DB2=OFF
        -DWITH_FIREBIRD=OFF -DWITH_MYSQL=OFF -DWITH_ORACLE=OFF -DWITH_POSTGRESQL=OFF -DWITH_ODBC=ON
        -DODBC_LIBRARY=odbc32 -DWITH_SQLITE3=ON -DSQLITE3_INCLUDE_DIR=$deps_prefix/include
        -DSQLITE3_LIBRARY=$deps_prefix/lib/libsqlite3.a"
    [cli11]="-DCLI11_BUILD_TESTS=OFF -DCLI11_BUILD_EXAMPLES=OFF -DCLI11_BUILD_DOCS=OFF"
    [benchmark]="-DBENCHMARK_ENABLE_TESTING=OFF -DBENCHMARK_ENABLE_GTEST_TESTS=OFF
        -DBENCHMARK_ENABLE_WERROR=OFF -DBENCHMARK_INSTALL_DOCS=OFF
        -DGIT_VERSION=0.0.0" # means: not built from git, use the release's version
    # A client for mail, with the system's TLS. Its SMTP needs parts of its HTTP; all other protocols are left out.
    [curl]="-DCURL_USE_SCHANNEL=ON -DBUILD_CURL_EXE=OFF -DBUILD_TESTING=OFF -DENABLE_MANUAL=OFF
        -DCURL_ZLIB=OFF -DCURL_USE_LIBSSH2=OFF -DCURL_DISABLE_FTP=ON
        -DCURL_DISABLE_FILE=ON -DCURL_DISABLE_DICT=ON -DCURL_DISABLE_GOPHER=ON -DCURL_DISABLE_IMAP=ON
        -DCURL_DISABLE_LDAP=ON -DCURL_DISABLE_LDAPS=ON -DCURL_DISABLE_MQTT=ON -DCURL_DISABLE_POP3=ON
        -DCURL_DISABLE_RTSP=ON -DCURL_DISABLE_SMB=ON -DCURL_DISABLE_TELNET=ON -DCURL_DISABLE_TFTP=ON"
    [pugixml]=""
)

# dependency_key NAME: what the built library depends on. It changes when a rebuild is due.
dependency_key() {
    local own_files=$repo_root/cmake/deps/$1
    printf '%s\n' "$1" "${dependency_source[$1]}" "${dependency_options[$1]}" "$compiler_identity"
    { cat "$toolchain_file" && if [ -d "$own_files" ]; then cat "$own_files"/*; fi; } | sha256sum
}

dependency_is_current() {
    local stamp=$deps_dir/stamps/$1
    [ -f "$stamp" ] && [ "$(<"$stamp")" = "$(dependency_key "$1")" ]
}

# build_sqlite_amalgamation FOLDER: Debian ships the development tree; this makes the one-file form.
# The generators among its sources run on this machine, hence the native compiler.
build_sqlite_amalgamation() {
    local log=$deps_dir/sqlite3.log
    (
        cd "$1" || exit
        run_logged "$log" ./configure --disable-tcl --disable-readline --disable-load-extension CC=gcc
        run_logged "$log" make sqlite3.c
    )
    cp "$repo_root/cmake/deps/sqlite3/"* "$1/"
}

# keep_notice NAME SOURCE: what the packages tell of a library: its licences and its version.
keep_notice() {
    local folder=$deps_prefix/share/notices/$1
    [ -f "$2/debian/copyright" ] || return 0
    mkdir -p "$folder"
    cp "$2/debian/copyright" "$folder/copyright"
    dpkg-parsechangelog -l "$2/debian/changelog" -S Version >"$folder/version"
}

# cmake_install NAME SOURCE: configures, builds and installs one library.
cmake_install() {
    local name=$1 source=$2 log=$deps_dir/$1.log build=$deps_dir/build/$1 options
    read -r -d '' -a options <<<"${dependency_options[$name]}" || true
    rm -rf "$build"
    # The prefix map keeps this machine's paths out of what the libraries say about themselves.
    export CFLAGS="-ffile-prefix-map=$source=$name" CXXFLAGS="-ffile-prefix-map=$source=$name"
    run_logged "$log" cmake -S "$source" -B "$build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain_file" \
        -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF -DCMAKE_INSTALL_PREFIX="$deps_prefix" \
        -DCMAKE_INSTALL_LIBDIR=lib -DCMAKE_PREFIX_PATH="$deps_prefix" "${options[@]}"
    run_logged "$log" cmake --build "$build"
    run_logged "$log" cmake --install "$build"
}

# build_dependency NAME: source, build, install, stamp; the intermediate folders go.
build_dependency() {
    local name=$1 source=${dependency_source[$1]}
    say "building $name"
    rm -f "$deps_dir/$name.log" "$deps_dir/stamps/$name"
    if [ "${source#/}" = "$source" ]; then
        fetch_debian_source "$source" "$deps_dir/src/$name" "$deps_dir/$name.log"
        source=$deps_dir/src/$name
    fi
    [ "$name" != sqlite3 ] || build_sqlite_amalgamation "$source"
    (cmake_install "$name" "$source")
    keep_notice "$name" "$source"
    mkdir -p "$deps_dir/stamps"
    dependency_key "$name" >"$deps_dir/stamps/$name"
    rm -rf "$deps_dir/build/$name" "$deps_dir/src/$name"
}

# ensure_dependencies: builds those that are missing or out of date.
ensure_dependencies() {
    [ -f "$toolchain_file" ] || die "no such file: $toolchain_file"
    local name due=() need_lists=
    compiler_identity=$(x86_64-w64-mingw32-g++-posix --version | head -n 1)
    for name in "${dependency_names[@]}"; do
        dependency_is_current "$name" && continue
        due+=("$name")
        [ "${dependency_source[$name]#/}" != "${dependency_source[$name]}" ] || need_lists=1
    done
    [ -z "$need_lists" ] || prepare_source_lists
    for name in "${due[@]}"; do build_dependency "$name"; done
}

# ensure_templates: the header of the template library beside the other libraries, where the cross build looks.
ensure_templates() {
    local header=kainjow/mustache.hpp
    cmp -s "/usr/include/$header" "$deps_prefix/include/$header" ||
        install -D -m 644 "/usr/include/$header" "$deps_prefix/include/$header"
}

# The checker of the pages' accessibility: one script of an npm package, known by its checksum.
axe_version=4.14.1
axe_checksum=e6b0ce02b84d892e2e33e403485e7f3d6c29e2be6df65daf44d89ba564139745
axe_script=$deps_dir/axe/axe.min.js
axe_stamp=$deps_dir/stamps/axe-$axe_version

fetch_axe() {
    local scratch=$deps_dir/axe/fetch log=$deps_dir/axe.log archive=axe-core-$axe_version.tgz
    rm -rf "$scratch" && mkdir -p "$scratch" "$deps_dir/stamps" && cd "$scratch" || return
    run_logged "$log" npm pack --silent "axe-core@$axe_version" &&
        printf '%s  %s\n' "$axe_checksum" "$archive" >sum &&
        run_logged "$log" sha256sum -c sum &&
        run_logged "$log" tar -xzf "$archive" package/axe.min.js &&
        mv package/axe.min.js "$axe_script" && rm -r "$scratch" && touch "$axe_stamp"
}

# ensure_axe: the script, for the browser test. Without npm or the network the test runs without this check.
ensure_axe() {
    [ ! -f "$axe_stamp" ] || return 0
    if ! command -v npm >/dev/null || ! (fetch_axe); then
        say "axe-core cannot be fetched: the browser test leaves the accessibility check out"
    fi
}
