#!/usr/bin/env bash
# try-packages.sh: builds the Debian packages, installs them one after the other in an empty Debian 12
# root, from this machine's mirror, and runs the examples that they carry there. Needs root, and about a
# gigabyte below TMPDIR.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-packages.sh build tool package root
work=$(mktemp -d)
root=$work/root
trap 'umount "$root/proc" 2>/dev/null || true; rm -rf --one-file-system "$work"' EXIT

cmake -S . -B "$work/build" -DCMAKE_INSTALL_PREFIX=/usr -DTDMS_BUILD_TESTS=OFF >/dev/null
cmake --build "$work/build" --parallel "$(nproc)" >/dev/null
(cd "$work/build" && cpack >/dev/null)

# The format is apt-get's.
# shellcheck disable=SC2016
mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Suite: bookworm' | head -n 1)
debootstrap --variant=minbase bookworm "$root" "$mirror" >/dev/null
mkdir "$root/packages"
cp "$work"/build/*.deb scripts/try-examples.sh "$root/packages"
cp /etc/resolv.conf "$root/etc"
mount -t proc proc "$root/proc"

# Every package brings what it depends on, and its example runs.
in_root() {
    env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive \
        chroot "$root" sh -euc "$1"
}
install() { # PACKAGE...
    for package in "$@"; do
        in_root "apt-get install -y -qq --no-install-recommends $package >/tmp/log 2>&1" || {
            cat "$root/tmp/log"
            return 1
        }
    done
}
try() { # LANGUAGE FOLDER: the example in a folder below /usr/share/doc
    in_root "cd /tmp && /packages/try-examples.sh $1 /usr/share/doc/$2 sine.tdms"
}
install "/packages/libtdms1_*.deb" "/packages/libtdms-dev_*.deb" gcc libc6-dev pkg-config
try c libtdms-dev/examples/c
install g++ cmake make
try cpp libtdms-dev/examples/cpp
install "/packages/python3-tdms_*.deb"
try python python3-tdms/examples
install "/packages/tdms-tools_*.deb"
in_root 'tdms check /tmp/sine.tdms'
echo "all packages work"
