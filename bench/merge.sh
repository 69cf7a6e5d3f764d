#!/usr/bin/env bash
# The merge of a large event: LINES results lines (100,000 by default) of one
# two-player event with a sequential test, written as a 4-slice run writes
# them (game pairs dealt to slice pair modulo 4), merged RUNS times (5 by
# default) by `talvena -use=merge`. Prints the median wall and processor
# (user + system) times, the lines merged per second of wall time, the bytes
# of a results line and the merge's peak memory (GNU time, Debian's `time`).
#   bench/merge.sh build/talvena [LINES] [RUNS]
set -euo pipefail
TALVENA=$(readlink -f "${1:-build/talvena}")
LINES=${2:-100000}
RUNS=${3:-5}
WORK=$(mktemp -d /tmp/talvena-bench-merge.XXXXXX)
trap 'rm -rf "$WORK"' EXIT

printf '%s\t%s\n' name bench type 1 players 'Simple5 (embedded  Simple5), BattleField (embedded  BattleField)' \
  clock 0/1000+50 openings 'examples/games.pgn plies 8 order random start 0' seed 20261124 \
  sprt '0 5 0.05 0.05' >"$WORK/bench-1-event.txt"

# Results drawn with a fixed seed: a third decisive each way, a third drawn.
awk -v lines="$LINES" -v folder="$WORK" 'BEGIN {
  srand(20261124)
  n = split("e2e4 e7e5 g1f3 b8c6 f1b5 a7a6 b5a4 g8f6|d2d4 g8f6 c2c4 g7g6 b1c3 f8g7 e2e4 d7d6|e2e4 c7c5 g1f3 d7d6 d2d4 c5d4 f3d4 g8f6|d2d4 d7d5 c2c4 d5c4 g1f3 g8f6 e2e3 e7e6", openings, "|")
  for (k = 0; k < 4; k++)
    print "round\tgame\twhite\tblack\tresult\treason\tplies\tms\topening" > (folder "/bench-1-" k "-of-4-results.tsv")
  for (i = 0; i < lines; i++) {
    pair = int(i / 2)
    first = i % 2 == 0
    outcome = int(rand() * 3)
    result = outcome == 0 ? "1-0" : outcome == 1 ? "0-1" : "1/2-1/2"
    reason = outcome == 2 ? "triple repetition" : "mate"
    printf "%d\t%d\t%s\t%s\t%s\t%s\t%d\t%d\t%s\n", pair + 1, first ? 1 : 2, first ? "Simple5" : "BattleField",
           first ? "BattleField" : "Simple5", result, reason, 40 + int(rand() * 120), 2000 + int(rand() * 8000),
           openings[pair % n + 1] > (folder "/bench-1-" pair % 4 "-of-4-results.tsv")
  }
}'

files=("$WORK"/bench-1-{0,1,2,3}-of-4-results.tsv)
"$TALVENA" -use=merge "${files[@]}" </dev/null >"$WORK/merge.out"
grep -qx "# merge: $LINES games from 4 files" "$WORK/merge.out" || { cat "$WORK/merge.out"; exit 1; }
TIMEFORMAT='%R %U %S'
for _ in $(seq "$RUNS"); do
  { time "$TALVENA" -use=merge "${files[@]}" </dev/null >/dev/null; } 2>&1
done >"$WORK/times"
bytes=$(cat "${files[@]}" | wc -c)
median() { sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }
wall=$(awk '{ print $1 }' "$WORK/times" | median)
cpu=$(awk '{ print $2 + $3 }' "$WORK/times" | median)
awk -v lines="$LINES" -v bytes="$bytes" -v runs="$RUNS" -v wall="$wall" -v cpu="$cpu" 'BEGIN {
  printf "merge of %d lines in 4 files (%.1f MB, %.0f bytes a line), median of %d runs: wall %.3f s, processor %.3f s; %.0f lines a second\n",
         lines, bytes / 1e6, bytes / lines, runs, wall, cpu, lines / wall
}'
/usr/bin/time -f '%M' -o "$WORK/peak" "$TALVENA" -use=merge "${files[@]}" </dev/null >/dev/null
echo "peak memory of the merge: $(($(cat "$WORK/peak") / 1024)) MB"
grep -E '^# (Simple5 vs|sprt|SPRT)' "$WORK/merge.out" || true
