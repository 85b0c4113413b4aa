#!/bin/sh
# SPDX-License-Identifier: MIT
# Measures all that docs/PERFORMANCE.md shows and puts the tables there. Takes hours.
#   bench/document.sh FOLDER [--base NAME=LIBRARY|COMMIT]...
#     FOLDER  hypergraphs, .hgr or .hgr.gz; one named ibm10 serves for stages and counts
#   ROUNDS=5        calls of each build on everything but the largest inputs
#   LARGE_ROUNDS=1  and on those of ten million pins
set -eu
[ $# -ge 1 ] || {
    sed -n '2,6s/^# //p' "$0" >&2
    exit 2
}
folder=$1
shift
root=$(dirname "$0")/..
rounds=${ROUNDS:-5}
large_rounds=${LARGE_ROUNDS:-1}
document=$root/docs/PERFORMANCE.md
lab=$root/build/bench/lab
mkdir -p "$lab"

"$root"/bench/compare_builds.py --folder "$folder" "$@" --rounds "$rounds" --csv "$lab/speed.csv" \
    --into "$document:speed"
"$root"/bench/compare_builds.py --generate netlist,mesh,powerlaw --pins 1e5,1e6 --settings '1 run' "$@" \
    --rounds "$rounds" --csv "$lab/growth.csv"
"$root"/bench/compare_builds.py --generate netlist,mesh,powerlaw --pins 1e7 --settings '1 run' --nparts 2 "$@" \
    --rounds "$large_rounds" --csv "$lab/large.csv"
"$root"/bench/compare_builds.py --read "$lab/growth.csv" "$lab/large.csv" --into "$document:growth"
"$root"/bench/compare_builds.py --folder "$folder" --only ibm10 --settings '1 run' "$@" --rounds "$rounds" \
    --stages --counts --tables stages,counts --csv "$lab/stages.csv" --into "$document:stages"
"$root"/bench/measure_files.py --rounds "$rounds" --program 2,8 --into "$document:files"
"$root"/bench/traps.py --into "$document:traps"
