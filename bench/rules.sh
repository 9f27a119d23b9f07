#!/usr/bin/env bash
# Runs the rule workloads through the command-line host, whole process, and
# prints for each the median wall seconds and peak memory of N runs and the
# number of rules fired. Usage: bench/rules.sh [TAVO] [RUNS]
#   seating16/64/128  guests seated by alternating sex and a shared hobby
#   joins             50,000 facts each of two kinds joined with a third,
#                     and a negated join, then one run
#   fuzzy             fuzzy readings matched, correlated and merged
#   waltz12/25/50     line drawings of 12, 25 and 50 stair blocks labelled
#                     by constraint propagation
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
tavo=${1:-$here/../build/release/tavo}
runs=${2:-5}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

median() { sort -g | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }

workload() {
  local name=$1; shift
  : > "$work/wall"; : > "$work/mem"
  for ((r = 0; r < runs; ++r)); do
    /usr/bin/time -f '%e %M' -o "$work/t" "$tavo" "$@" > "$work/out"
    read -r wall mem < "$work/t"
    echo "$wall" >> "$work/wall"
    echo "$mem" >> "$work/mem"
  done
  fired=$(grep -o '^[0-9]* rules fired' "$work/out" | tail -1 | cut -d' ' -f1)
  printf '%-12s %10s %10s %12s\n' "$name" "$(median < "$work/wall")" "${fired:-?}" "$(median < "$work/mem")"
}

printf '%-12s %10s %10s %12s\n' workload "wall s" fired "peak KiB"
for n in 16 64 128; do
  workload "seating$n" "$here/rules/seating.clp" "$here/rules/guests$n.clp"
done
workload joins "$here/rules/joins.clp"
workload fuzzy "$here/rules/fuzzy.clp"
for n in 12 25 50; do
  workload "waltz$n" "$here/rules/waltz.clp" "$here/rules/waltz$n.clp"
done
