#!/usr/bin/env bash
# One event as 1 slice and as 4 slices on this machine: GAMES games (200 by
# default) between the embedded souls Simple5 and BattleField at GAME_MS +
# INC_MS a side (500 ms + 20 ms unless given in the environment), random
# openings from examples/games.pgn with a fixed seed.
#  - 1 slice with <threads>2</threads>: two games at a time;
#  - 4 slices of <threads>1</threads>, two slices at a time (parallel -j2):
#    two games at a time as well, so the difference is the slicing's cost.
# Prints for each the wall time, the processor time, the games' own durations
# (the results' ms column) and the wall time per game, then the bytes a game
# leaves in the log folder: its results line, its PGN, and its engines' log
# (each round writes its games' logs anew, so these are the last round's).
#   bench/slices.sh build/talvena [GAMES]
set -euo pipefail
TALVENA=$(readlink -f "${1:-build/talvena}")
GAMES=${2:-200}
GAME_MS=${GAME_MS:-500}
INC_MS=${INC_MS:-20}
ROOT=$(cd "$(dirname "$0")/.." && pwd)
WORK=$(mktemp -d /tmp/talvena-bench-slices.XXXXXX)
trap 'rm -rf "$WORK"' EXIT

write_event() {  # name threads
  sed -e "s|name=\"souls\"|name=\"$1\"|" -e "s|<rounds>[0-9]*<|<rounds>$(((GAMES + 1) / 2))<|" \
    -e "s|<threads>[0-9]*<|<threads>$2<|" -e "s|<logfolder>[^<]*<|<logfolder>$WORK/$1<|" \
    -e "s|<openings>|<openings>$ROOT/|" -e "s|game_ms=\"[0-9]*\" increment_ms=\"[0-9]*\"|game_ms=\"$GAME_MS\" increment_ms=\"$INC_MS\"|" \
    "$ROOT/examples/slurm/souls.xml" >"$WORK/$1.xml"
}

report() {  # label, the file holding "wall user sys", the run's log folder
  local times
  read -r -a times <"$2"
  awk -F'\t' -v label="$1" -v wall="${times[0]}" -v user="${times[1]}" -v sys="${times[2]}" '
    FNR > 1 { games++; ms += $8; plies += $7; if ($6 == "forfeit") forfeits++ }
    END {
      cpu = user + sys
      printf "%s: %d games in %.1f s wall (%.2f s a game), processor %.1f s (%.2f s a game); games %.1f s in all (%.2f s and %.0f plies a game), %d lost on time\n",
             label, games, wall, wall / games, cpu, cpu / games, ms / 1000, ms / games / 1000, plies / games, forfeits
    }' "$3"/*results.tsv
}

TIMEFORMAT='%R %U %S'
write_event one 2
{ time "$TALVENA" -use=tourney -ini="$WORK/one.xml" </dev/null >"$WORK/one.out" 2>&1; } 2>"$WORK/one.time"
report "1 slice, 2 games at a time" "$WORK/one.time" "$WORK/one"

write_event four 1
{ time parallel -j2 "$TALVENA" -use=tourney -ini="$WORK/four.xml" -shard={}/4 '</dev/null' ">$WORK/four-{}.out" '2>&1' \
  ::: 0 1 2 3; } 2>"$WORK/four.time"
report "4 slices, 2 at a time" "$WORK/four.time" "$WORK/four"

games=$(tail -q -n +2 "$WORK"/one/*results.tsv | wc -l)
logs=$(ls "$WORK"/one/one-1-*.log | wc -l)
bytes() { cat "$@" | wc -c; }
printf 'bytes a game: results line %d, PGN %d, engine log %d\n' "$(($(bytes "$WORK"/one/*results.tsv) / games))" \
  "$(($(bytes "$WORK"/one/one-1-*.pgn) / games))" "$(($(bytes "$WORK"/one/one-1-*.log) / logs))"
