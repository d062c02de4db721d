# shellcheck shell=bash
# Debian source packages, fetched through an apt configuration of our own inside the build folder,
# so that the machine's configuration is read but never changed.

# shellcheck source-path=SCRIPTDIR
. "${BASH_SOURCE%/*}/packages.sh"

apt_dir=$deps_dir/apt

# debian_archives: prints "URI SUITE" for every Debian archive the machine is configured for. apt itself
# reads its configuration here, in whatever form it is written. What counts is the origin named in
# the signed release file, not how an address looks: other publishers use Debian's suite names too.
debian_archives() {
    local codename
    codename=$(. /etc/os-release && printf '%s' "${VERSION_CODENAME-}")
    # shellcheck disable=SC2016  # apt expands these, not the shell
    apt-get indextargets --format '$(ORIGIN) $(REPO_URI) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' |
        awk -v codename="$codename" '
            $1 == "Debian" && $4 == "main" && index($3, codename) == 1 && $3 !~ /-backports/ { print $2, $3 }' |
        sort -u
}

# private_apt COMMAND ARGS...: one apt-get command under the private configuration.
private_apt() {
    local command=$1
    shift
    apt-get "$command" -q \
        -o Dir::Etc::SourceList="$apt_dir/sources.list" -o Dir::Etc::SourceParts=/dev/null \
        -o Dir::State::Lists="$apt_dir/lists" -o Dir::Cache="$apt_dir/cache" \
        -o Acquire::Languages=none -o Acquire::Retries=3 -o APT::Sandbox::User="$(id -un)" "$@"
}

# prepare_source_lists: writes the deb-src lines and fetches their indexes, once a run of setup.
prepare_source_lists() {
    local log=$deps_dir/apt.log archives keyring=/usr/share/keyrings/debian-archive-keyring.gpg option=
    mkdir -p "$apt_dir/lists/partial" "$apt_dir/cache/archives/partial"

    archives=$(debian_archives)
    if [ -z "$archives" ]; then
        # Origins are known only once the release files have been fetched; images often ship without.
        refresh_package_lists "$log"
        archives=$(debian_archives)
    fi
    [ -n "$archives" ] || die "apt is not configured for a Debian archive (component main)"

    [ ! -r "$keyring" ] || option="[signed-by=$keyring] "
    awk -v option="$option" '{ print "deb-src " option $1 " " $2 " main" }' \
        <<<"$archives" >"$apt_dir/sources.list"
    say "fetching the index of Debian source packages"
    run_logged "$log" private_apt update
}

# fetch_debian_source PACKAGE FOLDER LOG: unpacks the newest source of PACKAGE, Debian's patches applied,
# as FOLDER. apt checks the files against the signed index.
fetch_debian_source() {
    local package=$1 folder=$2 log=$3 scratch=$2.fetch
    rm -rf "$folder" "$scratch"
    mkdir -p "$scratch"
    (cd "$scratch" && run_logged "$log" private_apt source --only-source "$package")
    local unpacked
    unpacked=$(find "$scratch" -mindepth 1 -maxdepth 1 -type d)
    [ -d "$unpacked" ] || die "the source package $package did not unpack to one folder"
    mv "$unpacked" "$folder"
    rm -rf "$scratch"
}
