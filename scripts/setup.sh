#!/usr/bin/env bash
# Installs the Debian packages that are missing, and does nothing when all of them are there.
#   scripts/setup.sh           what the program needs to be built
#   scripts/setup.sh --python  and what the Python package needs
#   scripts/setup.sh --tests   and what the tests of both need
#   scripts/setup.sh --docs    and what the site of the documents is made with, without the tests
#   scripts/setup.sh --ci      and what the checks of .ci/run need
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/quietly.sh

usage() {
    echo "Usage: scripts/setup.sh [--python | --tests | --docs | --ci]" >&2
    exit 2
}

[ $# -le 1 ] || usage
packages=(g++ cmake ninja-build libproj-dev)
tools=(c++ cmake ninja)
python=(python3 python3-numpy python3-xarray python3-netcdf4 python3-matplotlib python3-pyproj python3-rasterio
    python3-rich python3-dask python3-distributed python3-zarr python3-threadpoolctl libopenblas0-pthread)
# Programs of others that open what tdr has written.
openers=(gmt gdal-bin netcdf-bin)
site=(doxygen python3-sphinx python3-myst-parser python3-numpydoc python3-breathe furo)
case "${1-}" in
    "") ;;
    --python) packages+=("${python[@]}") ;;
    --tests)
        packages+=(doctest-dev gfortran pkgconf groff-base man-db python3-pip python3-setuptools python3-wheel)
        packages+=("${python[@]}" python3-pytest python3-hypothesis "${openers[@]}")
        ;;
    --docs)
        packages+=("${python[@]}" "${site[@]}")
        tools+=(doxygen)
        ;;
    --ci)
        # libclang-rt-dev: the run-time library of clang's sanitizers and fuzzer.
        packages+=(doctest-dev gfortran pkgconf clang clang-format clang-tidy libclang-rt-dev valgrind shellcheck git
            groff-base man-db mandoc python3-pip python3-setuptools python3-wheel
            ccache debhelper dh-python dpkg-dev fakeroot lintian pybuild-plugin-pyproject)
        packages+=("${python[@]}" python3-pytest python3-hypothesis "${openers[@]}" "${site[@]}" black flake8 mypy)
        # Started for the batch scripts alone (tests/slurm).
        packages+=(slurm-wlm munge)
        tools+=(ccache clang++ clang-format clang-tidy valgrind shellcheck git)
        ;;
    *) usage ;;
esac

other_systems() {
    cat >&2 <<'TEXT'
Without apt-get the packages have to be installed by hand. Their names elsewhere:
  Fedora  dnf install gcc-c++ cmake ninja-build proj-devel
          tests: doctest-devel gcc-gfortran    checks: clang clang-tools-extra compiler-rt valgrind ShellCheck git
          tdr: python3-xarray python3-netcdf4 python3-matplotlib python3-pyproj python3-rasterio python3-rich
               python3-dask python3-distributed python3-threadpoolctl openblas-threads    pip install "zarr<3"
  Arch    pacman -S gcc cmake ninja proj
          tests: doctest gcc-fortran    checks: clang compiler-rt valgrind shellcheck git
          tdr: python-xarray python-netcdf4 python-matplotlib python-pyproj python-rasterio python-rich
               python-dask python-distributed python-threadpoolctl blas-openblas    pip install "zarr<3"
  macOS   brew install cmake ninja proj
          tests: doctest          checks: llvm shellcheck git
          tdr: pip install .
TEXT
}

if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
    missing=()
    for tool in "${tools[@]}"; do
        command -v "$tool" >/dev/null || missing+=("$tool")
    done
    if [ ${#missing[@]} -gt 0 ]; then
        echo "Not found: ${missing[*]}" >&2
        other_systems
        exit 1
    fi
    # The libraries are left to CMake, which says which one it cannot find.
    echo "Setup: no apt-get here; ${tools[*]} are installed."
    exit 0
fi

missing=()
for package in "${packages[@]}"; do
    state=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) || state=missing
    [ "$state" = installed ] || missing+=("$package")
done
if [ ${#missing[@]} -eq 0 ]; then
    echo "Setup: all packages are installed (${packages[*]})."
    exit 0
fi

# Without a terminal nobody can type a password: sudo is used only if it asks for none.
if [ "$(id -u)" -eq 0 ]; then
    as_root=(env)
elif command -v sudo >/dev/null && [ -t 0 ]; then
    sudo -v
    as_root=(sudo -n env)
elif command -v sudo >/dev/null && sudo -n true 2>/dev/null; then
    as_root=(sudo -n env)
else
    echo "Missing packages, and no right to install them. As root, run:" >&2
    echo "  apt-get update && apt-get install ${missing[*]}" >&2
    exit 1
fi

echo "Setup: installing ${missing[*]} with apt-get ..."
log=$(mktemp "${TMPDIR:-/tmp}/tidora-setup.XXXXXX")
apt=("${as_root[@]}" DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=300 -o Acquire::Retries=3)
quietly "$log" "${apt[@]}" update
quietly "$log" "${apt[@]}" install --yes --no-install-recommends "${missing[@]}"
rm -f "$log"
echo "Setup: done."
