#!/usr/bin/env bash
# Installs what a fresh Debian 12 machine lacks to build, test and run this project.
# Idempotent; a partly failing `apt-get update` (an i386 index that is mid-sync) is tolerated
# and the script goes on with whatever it can install.
set -u

# g++-multilib brings the 32-bit run-times of the address and undefined-behaviour sanitizers
# that the sanitized build of .ci/run links; valgrind brings memcheck and helgrind.
packages=(g++-multilib ccache cmake ninja-build pkg-config binutils googletest valgrind)
# The command-line tool reads and writes PNG through lodepng; its 32-bit library comes from the
# i386 architecture, which has to be enabled first.
i386_packages=(liblodepng-dev:i386 libc6-dbg:i386)

as_root() {
    if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

missing=()
for package in "${packages[@]}" "${i386_packages[@]}"; do
    dpkg -s "$package" >/dev/null 2>&1 || missing+=("$package")
done
if [ ${#missing[@]} -eq 0 ]; then
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

# Only the compiler is indispensable; report the rest but let the build decide.
if ! dpkg -s g++-multilib >/dev/null 2>&1; then
    echo "setup: g++-multilib is missing; the 32-bit build cannot run" >&2
    exit 1
fi
exit 0
