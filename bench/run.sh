#!/usr/bin/env bash
# Times the workload scripts through the command-line host, whole process,
# and prints the median user+system CPU seconds and peak memory of N runs;
# then runs the benchmark programs built beside TAVO: evaluation (calls,
# heap allocations per call, parsing), values, and facts.
# Usage: bench/run.sh [TAVO] [RUNS]
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
tavo=${1:-$here/../build/release/tavo}
runs=${2:-5}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# 8,000 deffunctions of two statements each, in one file.
for ((i = 0; i < 8000; ++i)); do
  echo "(deffunction f$i (?x ?y) (bind ?z (+ ?x ?y $i)) (* ?z 2))"
done > "$work/deffunctions.clp"

median() { sort -g | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }

printf '%-14s %10s %12s\n' workload "cpu s" "peak KiB"
for script in "$here"/scripts/*.clp "$work/deffunctions.clp"; do
  name=$(basename "$script" .clp)
  : > "$work/cpu"; : > "$work/mem"
  for ((r = 0; r < runs; ++r)); do
    /usr/bin/time -f '%U %S %M' -o "$work/t" "$tavo" "$script" > /dev/null
    read -r user sys mem < "$work/t"
    awk -v u="$user" -v s="$sys" 'BEGIN { printf "%.2f\n", u + s }' >> "$work/cpu"
    echo "$mem" >> "$work/mem"
  done
  printf '%-14s %10s %12s\n' "$name" "$(median < "$work/cpu")" "$(median < "$work/mem")"
done

build=$(dirname "$tavo")/bench
for program in EvaluationBench ValueBench FactsBench ReteBench; do
  if [ -x "$build/$program" ]; then
    echo
    "$build/$program" --benchmark_repetitions="$runs" --benchmark_report_aggregates_only=true 2>&1 |
      grep -E '^(BM_|Benchmark|-)' | grep -v -E '_(mean|stddev|cv) '
  fi
done
