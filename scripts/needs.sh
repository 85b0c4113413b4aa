# SPDX-License-Identifier: MIT
# shellcheck shell=sh
# scripts/needs.sh: what the scripts beside it need, read by them with '.'.
#
# need_tools checks for the compiler, CMake and Ninja, need_tests also for GoogleTest and Python.
# On Debian, as root, the missing ones are installed; elsewhere they are named and the script ends.

MISSING=

# at_least VERSION LEAST: is VERSION no older than LEAST?
at_least() {
    [ "$(printf '%s\n%s\n' "$1" "$2" | sort -V | head -n 1)" = "$2" ]
}

lacks() {
    ! command -v "$1" >/dev/null 2>&1
}

note_missing_tools() {
    if lacks "${CXX:-g++}"; then
        MISSING="$MISSING g++"
    fi
    if lacks cmake || ! at_least "$(cmake --version | sed -n 's/^cmake version //p')" 3.25; then
        MISSING="$MISSING cmake"
    fi
    if lacks ninja; then
        MISSING="$MISSING ninja-build"
    fi
    note_missing_for_zorpelx
    note_missing_for_clusters
}

# The zorpelx program is left out of the build without these.
note_missing_for_zorpelx() {
    lacks pkg-config && MISSING="$MISSING pkg-config"
    [ -e /usr/include/CLI/CLI.hpp ] || MISSING="$MISSING libcli11-dev"
    [ -e /usr/include/nlohmann/json.hpp ] || MISSING="$MISSING nlohmann-json3-dev"
    [ -e /usr/include/zlib.h ] || MISSING="$MISSING zlib1g-dev"
    [ -e /usr/include/zstd.h ] || MISSING="$MISSING libzstd-dev"
    [ -e /usr/include/lzma.h ] || MISSING="$MISSING liblzma-dev"
    [ -e /usr/include/sha2.h ] || MISSING="$MISSING libmd-dev"
    [ -e /usr/include/bzlib.h ] || MISSING="$MISSING libbz2-dev"
}

# The zorpelx-mpi program is left out of the build without these.
note_missing_for_clusters() {
    lacks mpirun && MISSING="$MISSING openmpi-bin"
    lacks mpicc && MISSING="$MISSING libopenmpi-dev"
    return 0
}

note_missing_for_tests() {
    # Job arrays are run by a Slurm of one node, and their script is checked.
    [ -x /usr/sbin/slurmctld ] || MISSING="$MISSING slurmctld"
    [ -x /usr/sbin/slurmd ] || MISSING="$MISSING slurmd"
    lacks sbatch && MISSING="$MISSING slurm-client"
    [ -x /usr/sbin/munged ] || MISSING="$MISSING munge"
    lacks shellcheck && MISSING="$MISSING shellcheck"
    # The types that the Python package promises.
    lacks mypy && MISSING="$MISSING mypy"
    if lacks python3; then
        MISSING="$MISSING python3"
    fi
    if ! [ -e /usr/include/gtest/gtest.h ] && ! [ -e /usr/local/include/gtest/gtest.h ]; then
        MISSING="$MISSING libgtest-dev"
    fi
    if lacks zstd; then
        MISSING="$MISSING zstd"
    fi
    # Netlists are written by it, and what is made of them is read back.
    if lacks yosys; then
        MISSING="$MISSING yosys"
    fi
    # The published schema of zorpelx's answers is held against them by a validator.
    if ! python3 -c 'import jsonschema' 2>/dev/null; then
        MISSING="$MISSING python3-jsonschema"
    fi
    # The Python package takes their arrays where they are; without them its tests leave that out.
    if ! /usr/bin/python3 -c 'import numpy, scipy' 2>/dev/null; then
        MISSING="$MISSING python3-numpy python3-scipy"
    fi
    # A solver says whether formulas are read as they are written.
    if lacks cadical; then
        MISSING="$MISSING cadical"
    fi
    if lacks clasp; then
        MISSING="$MISSING clasp"
    fi
    # What is drawn by others is read back by them; notebooks are run; tables and graphs are taken.
    if lacks dot; then
        MISSING="$MISSING graphviz"
    fi
    if ! /usr/bin/python3 -c 'import matplotlib, networkx, pandas' 2>/dev/null; then
        MISSING="$MISSING python3-matplotlib python3-networkx python3-pandas"
    fi
    if ! /usr/bin/python3 -c 'import ipykernel, nbclient, nbformat' 2>/dev/null; then
        MISSING="$MISSING python3-ipykernel python3-nbclient python3-nbformat"
    fi
    # The page of zorpelx report is looked at in a browser, its pictures become PNG.
    if lacks chromium || lacks chromedriver || ! /usr/bin/python3 -c 'import selenium' 2>/dev/null; then
        MISSING="$MISSING chromium chromium-driver python3-selenium"
    fi
    lacks rsvg-convert && MISSING="$MISSING librsvg2-bin"
    # The wheel is built and installed without a network.
    if ! /usr/bin/python3 -c 'import setuptools, wheel, venv, ensurepip, pip' 2>/dev/null; then
        MISSING="$MISSING python3-pip python3-setuptools python3-venv python3-wheel"
    fi
}

install_missing() {
    [ -n "$MISSING" ] || return 0
    if lacks apt-get || [ "$(id -u)" -ne 0 ]; then
        echo "Needed and not found:$MISSING (names of Debian packages; g++ 12, CMake 3.25)." >&2
        echo "As root on Debian: apt-get install$MISSING" >&2
        exit 1
    fi
    echo "Installing:$MISSING"
    export DEBIAN_FRONTEND=noninteractive
    # shellcheck disable=SC2086 # a list of names
    { apt-get -qq update && apt-get -qq -y install --no-install-recommends $MISSING; } \
        </dev/null >/dev/null
}

# g++ 12 is the oldest compiler the sources are kept clean with; another one named by CXX is the
# user's choice.
check_compiler() {
    if [ -z "${CXX:-}" ] && ! at_least "$(g++ -dumpversion)" 12; then
        echo "g++ 12 or later is needed, this is $(g++ -dumpversion); CXX names another." >&2
        exit 1
    fi
}

need_tools() {
    note_missing_tools
    install_missing
    check_compiler
}

need_tests() {
    note_missing_tools
    note_missing_for_tests
    install_missing
    check_compiler
}
