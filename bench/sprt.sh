#!/usr/bin/env bash
# A sequential test run to its decision: Simple5 against a learned soul
# (by default G4-2, the second newcomer of generation 4 of
# "\learn FILE 4 6 10 30" from the presets, given as its soul text), two players, game pairs from
# random opening lines of a fixed seed, at a fast clock, two games at a time.
# Prints the games played, the pair cells, the last LLR line and the
# decision with the wall time.
#   bench/sprt.sh build/talvena
#   environment: SOUL="G4-2=v1 ... v21" SEED=2026 GAME_MS=2000 INC_MS=20
#     ELO0=0 ELO1=5 ALPHA=0.05 BETA=0.05 WORK=folder
set -euo pipefail
TALVENA=$(readlink -f "${1:-build/talvena}")
SOUL=${SOUL:-"G4-2=70 20 10 60 20 14 50 20 50 40 10 60 0 30 9 3 1 0 10 5 10"}
SEED=${SEED:-2026}
GAME_MS=${GAME_MS:-2000}
INC_MS=${INC_MS:-20}
WORK=${WORK:-$(mktemp -d /tmp/talvena-bench-sprt.XXXXXX)}
mkdir -p "$WORK"
cat >"$WORK/sprt.xml" <<XML
<tourney name="sprt"><options><rounds>100000</rounds><threads>2</threads><logfolder>$WORK</logfolder>
<opening_plies>8</opening_plies><seed>$SEED</seed>
<sprt elo0="${ELO0:-0}" elo1="${ELO1:-5}" alpha="${ALPHA:-0.05}" beta="${BETA:-0.05}"/></options>
<clock moves_per_second="0" game_ms="$GAME_MS" increment_ms="$INC_MS"/>
<engines><engine active="true" name="Simple5" protocol="embedded" parameters="Simple5"/>
<engine active="true" name="${SOUL%%=*}" protocol="embedded" parameters="$SOUL"/></engines></tourney>
XML
start=$(date +%s%N)
"$TALVENA" -use=tourney -ini="$WORK/sprt.xml" </dev/null >"$WORK/sprt.out" 2>&1
wall=$((($(date +%s%N) - start) / 1000000))
echo "games played: $(($(wc -l <"$WORK/sprt-1-results.tsv") - 1)), wall $((wall / 1000)) s, files in $WORK"
grep -E '^# Simple5 vs ' "$WORK/sprt.out" | tail -1
grep -E '^# sprt ' "$WORK/sprt.out" | tail -1
grep -E 'accepted' "$WORK/sprt.out" | head -1
