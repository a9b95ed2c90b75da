#!/usr/bin/env bash
# Installs what a fresh Debian 12 machine lacks to build, test and run this project.
# Idempotent; a partly failing `apt-get update` (an i386 index that is mid-sync) is tolerated
# and the script goes on with whatever it can install.
set -u

# g++-multilib brings the 32-bit run-times of the address and undefined-behaviour sanitizers
# that the sanitized build of .ci/run links; valgrind brings memcheck and helgrind.
packages=(g++-multilib ccache cmake ninja-build pkg-config binutils googletest valgrind patchelf)
# The command-line tool reads and writes PNG through lodepng; its 32-bit library comes from the
# i386 architecture, which has to be enabled first.
i386_packages=(liblodepng-dev:i386 libc6-dbg:i386)

as_root() {
    if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

# xvr-color reads and writes TIFF through libtiff and compresses PNG through zlib. Their i386
# -dev packages often cannot be installed (libtiff-dev:i386 and even libtiff6:i386 depend on an
# i386 liblzma5 whose version must equal the amd64 one, and the i386 index lags behind), so the
# static archives of libtiff and of every library it uses are unpacked from the i386 -dev
# packages into a project-local folder instead: `apt-get download` resolves no dependencies and
# the program links them in, so it needs none of them at run time. tools/CMakeLists.txt looks there.
project_dir="$(cd "$(dirname "$0")/.." && pwd)"
image_deps_dir="$project_dir/.deps/i386"
image_deps_packages=(libtiff-dev liblzma-dev libjpeg62-turbo-dev libdeflate-dev libzstd-dev
                     libwebp-dev libjbig-dev liblerc-dev zlib1g-dev)
image_deps_marker="$image_deps_dir/usr/lib/i386-linux-gnu/libtiff.a"

missing=()
for package in "${packages[@]}" "${i386_packages[@]}"; do
    dpkg -s "$package" >/dev/null 2>&1 || missing+=("$package")
done
if [ ${#missing[@]} -eq 0 ] && [ -f "$image_deps_marker" ]; then
    echo "setup: everything is installed"
    exit 0
fi

if ! dpkg --print-foreign-architectures | grep -qx i386; then
    as_root dpkg --add-architecture i386 || echo "setup: could not enable the i386 architecture" >&2
fi
as_root apt-get update || echo "setup: apt-get update failed in part; going on with what is there" >&2

export DEBIAN_FRONTEND=noninteractive
# One package at a time, so that one that cannot be had does not keep the others out.
install_package() {
    as_root apt-get install -y --no-install-recommends "$1"
}
for package in "${missing[@]}"; do
    if install_package "$package"; then
        continue
    fi
    # An i386 index caught mid-sync usually settles within a minute: refresh once and retry.
    if [[ "$package" == *:i386 ]]; then
        sleep 20
        as_root apt-get update || true
        install_package "$package" && continue
    fi
    echo "setup: could not install $package" >&2
done

download_image_deps() {
    local scratch
    scratch="$(mktemp -d)" || return 1
    local packages_i386=("${image_deps_packages[@]/%/:i386}")
    # apt hands the download to its unprivileged user, who must be able to write the folder.
    chmod 755 "$scratch"
    if ! (cd "$scratch" && apt-get download "${packages_i386[@]}"); then
        rm -rf "$scratch"
        return 1
    fi
    local result=0 deb
    rm -rf "$image_deps_dir.new" && mkdir -p "$image_deps_dir.new" || result=1
    for deb in "$scratch"/*.deb; do
        [ $result -eq 0 ] && { dpkg-deb -x "$deb" "$image_deps_dir.new" || result=1; }
    done
    if [ $result -eq 0 ]; then
        rm -rf "$image_deps_dir" && mv "$image_deps_dir.new" "$image_deps_dir" || result=1
    fi
    rm -rf "$scratch" "$image_deps_dir.new"
    return $result
}
if [ ! -f "$image_deps_marker" ]; then
    if download_image_deps || { as_root apt-get update; download_image_deps; }; then
        echo "setup: TIFF and zlib for xvr-color: unpacked the static i386 libraries of" \
             "${image_deps_packages[*]} into .deps/i386 (linked into the program; nothing installed system-wide)"
    else
        echo "setup: could not download the i386 libtiff packages; xvr-color will be built without TIFF support" >&2
    fi
fi

# Only the compiler is indispensable; report the rest but let the build decide.
if ! dpkg -s g++-multilib >/dev/null 2>&1; then
    echo "setup: g++-multilib is missing; the 32-bit build cannot run" >&2
    exit 1
fi
exit 0
