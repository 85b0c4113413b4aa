#!/bin/sh
# SPDX-License-Identifier: MIT
# Fuzzes every target for some seconds from its kept corpus and the seeds, then keeps of the corpus
# what adds coverage. Findings stay beside the corpus; a status other than 0 tells of them.
# usage: fuzz/corpus.sh BUILD [SECONDS]     (BUILD configured by the preset fuzz)
set -eu
build=$1
seconds=${2:-3600}
here=$(cd "$(dirname "$0")" && pwd)
status=0
for target in reader fixfile words entry files netlists numbers readers report interface; do
    kept=$build/fuzz/corpus/$target
    mkdir -p "$kept"
    "$build/fuzz/fuzz_$target" -max_total_time="$seconds" -max_len=4096 -print_final_stats=1 \
        -artifact_prefix="$build/fuzz/$target-" "$kept" "$here/seeds/$target" || status=1
    rm -rf "$kept.new"
    mkdir "$kept.new"
    "$build/fuzz/fuzz_$target" -merge=1 "$kept.new" "$kept" "$here/seeds/$target"
    rm -rf "$kept"
    mv "$kept.new" "$kept"
done
exit $status
