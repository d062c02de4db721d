# shellcheck shell=bash
# The third-party parts of the packages: their licences, from the copyright files of the Debian packages that they come
# from.

# shellcheck source-path=SCRIPTDIR
. "${BASH_SOURCE%/*}/dependencies.sh"

# What is linked into programs and DLLs: the libraries that setup builds, and binary packages with their copyright file.
shipped_libraries=(jsoncpp sqlite3 soci cli11 curl pugixml)
shipped_packages=(libkainjow-mustache-dev mingw-w64-common gcc-mingw-w64-base)

# ensure_notice NAME: for a library that was built before setup kept the files.
ensure_notice() {
    local folder=$deps_prefix/share/notices/$1 scratch=$deps_dir/notices.fetch source=${dependency_source[$1]}
    [ ! -f "$folder/copyright" ] || return 0
    [ -f "$apt_dir/sources.list" ] || prepare_source_lists
    rm -rf "$scratch"
    mkdir -p "$scratch"
    (cd "$scratch" && run_logged "$deps_dir/notices.log" \
        private_apt source --only-source --diff-only --download-only "$source")
    tar -C "$scratch" -xf "$scratch"/*.debian.tar.* debian/copyright debian/changelog
    keep_notice "$1" "$scratch"
    rm -rf "$scratch"
}

# write_notices FILE COMPONENTS: the licences, and a line "name TAB version" for each part.
write_notices() {
    local part version copyright
    {
        printf 'Parts of other projects in these programs, and their licences.\n'
        : >"$2"
        for part in "${shipped_libraries[@]}" "${shipped_packages[@]}"; do
            if [ -n "${dependency_source[$part]-}" ]; then
                ensure_notice "$part" >&2
                version=$(<"$deps_prefix/share/notices/$part/version")
                copyright=$deps_prefix/share/notices/$part/copyright
            else
                version=$(dpkg-query -W -f '${Version}' "$part")
                copyright=/usr/share/doc/$part/copyright
            fi
            printf '\n\n======== %s %s\n\n' "$part" "$version"
            cat "$copyright"
            printf '%s\t%s\n' "$part" "$version" >>"$2"
        done
    } >"$1"
}
