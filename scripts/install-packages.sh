#!/usr/bin/env bash
# install-packages.sh GROUP...: installs the Debian packages of the groups that are missing.
set -euo pipefail

packages=()
for group in "$@"; do
    case $group in
        build) packages+=(g++ cmake make) ;;
        test) packages+=(libgtest-dev ninja-build pkg-config python3-h5py tzdata) ;;
        python) packages+=(python3-numpy python3-pandas python3-pytest) ;;
        cluster) packages+=(python3-distributed) ;;
        lint) packages+=(clang-format clang-tidy cppcheck mypy shellcheck) ;;
        tool) packages+=(libcli11-dev libhdf5-dev gnuplot-nox) ;;
        hdf5) packages+=(libhdf5-dev hdf5-tools) ;;
        bench) packages+=(libbenchmark-dev libhdf5-dev time) ;;
        fuzz) packages+=(clang libclang-rt-14-dev) ;;
        coverage) packages+=(llvm) ;;
        docs) packages+=(doxygen) ;;
        package) packages+=(dpkg-dev file lintian) ;;
        root) packages+=(debootstrap) ;;
        *)
            echo "install-packages.sh: no group $group" >&2
            exit 2
            ;;
    esac
done

missing=()
for package in "${packages[@]}"; do
    [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) == installed ]] ||
        missing+=("$package")
done
((${#missing[@]} == 0)) && exit 0

as_root=()
((EUID == 0)) || as_root=(sudo)
echo "installing ${missing[*]}"
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
