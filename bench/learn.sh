#!/bin/bash
# Soul learning, then a match of what was learned against the default soul.
#  1. "\learn" from the presets: SOULS souls, GENERATIONS generations, MS ms per
#     move, games capped at MOVES moves a side; prints the generation lines and
#     the wall time.
#  2. The best soul of the last generation against Simple5 in a tournament of
#     embedded players (all-play-all, ROUNDS rounds of two games, GAME_MS per
#     game plus INC_MS per move, THREADS games at a time); an embedded player's
#     soul text is given in its "parameters" attribute. Prints the score and
#     the Elo difference with its 95% margin.
#   bench/learn.sh build/talvena [SOULS GENERATIONS MS MOVES]
#   environment: ROUNDS=200 GAME_MS=5000 INC_MS=50 THREADS=2 WORK=folder
#     OPENINGS=book.sbk (else random lines) OPENING_PLIES=8
#     BEST="NAME=v1 ... v21" skips the learning and matches this soul
set -u
[ $# -ge 1 ] && [ -x "$1" ] || { echo "usage: $0 /path/to/talvena [souls generations ms_per_move max_moves]" >&2; exit 2; }
TALVENA=$(readlink -f "$1")
SOULS=${2:-8}
GENERATIONS=${3:-10}
MS=${4:-50}
MOVES=${5:-60}
ROUNDS=${ROUNDS:-200}
GAME_MS=${GAME_MS:-5000}
INC_MS=${INC_MS:-50}
THREADS=${THREADS:-2}
WORK=${WORK:-$(mktemp -d /tmp/talvena-learn.XXXXXX)}
mkdir -p "$WORK"
SOULFILE=$WORK/learned.souls
SIMPLE5="Simple5=7 20 2 20 4 1 5 2 5 8 1 8 10 10 20 5 1 5 10 5 10"

OPENINGS=${OPENINGS:-}
OPENING_PLIES=${OPENING_PLIES:-8}
BEST=${BEST:-}
if [ -z "$BEST" ]; then
echo "learning: $SOULS souls, $GENERATIONS generations, $MS ms per move, $MOVES moves; files in $WORK"
start=$(date +%s%N)
printf '\\learn %s %s %s %s %s\nquit\n' "$SOULFILE" "$GENERATIONS" "$SOULS" "$MS" "$MOVES" |
  "$TALVENA" | grep --line-buffered -E '^# (generation|learning|soul file)'
end=$(date +%s%N)
echo "learning wall time: $(((end - start) / 1000000)) ms"

# The first soul after the last generation line is the best of the last generation.
BEST=$(awk '/^# generation /{next_is_best=1; next} next_is_best{best=$0; next_is_best=0} END{print best}' "$SOULFILE")
[ -n "$BEST" ] || { echo "FAIL: no learned soul in $SOULFILE"; exit 1; }
fi
echo "best learned soul: $BEST"

INI=$WORK/match.xml
cat >"$INI" <<XML
<?xml version="1.0"?>
<tourney name="learned-vs-simple5" type="gauntlet">
  <options>
    <openings>$OPENINGS</openings>
    <opening_plies>$OPENING_PLIES</opening_plies>
    <rounds>$ROUNDS</rounds>
    <threads>$THREADS</threads>
    <logfolder>$WORK</logfolder>
  </options>
  <clock game_ms="$GAME_MS" increment_ms="$INC_MS"/>
  <engines>
    <engine active="true" name="Learned" protocol="embedded" parameters="$BEST"/>
    <engine active="true" name="Simple5" protocol="embedded" parameters="$SIMPLE5"/>
  </engines>
</tourney>
XML

echo "match: $((2 * ROUNDS)) games, $GAME_MS ms + $INC_MS ms per move, $THREADS at a time"
(cd "$WORK" && "$TALVENA" -use=tourney -ini="$INI" </dev/null >"$WORK/match.out" 2>&1)
python3 - "$WORK" <<'PY'
import glob, math, os, re, sys
work = sys.argv[1]
points = games = 0.0
for path in glob.glob(os.path.join(work, "**", "*.pgn"), recursive=True):
    text = open(path, encoding="latin-1").read()
    for game in re.split(r"\n(?=\[Event )", text):
        tags = dict(re.findall(r'\[(\w+) "([^"]*)"\]', game))
        result = tags.get("Result")
        if result not in ("1-0", "0-1", "1/2-1/2") or "Learned" not in (tags.get("White"), tags.get("Black")):
            continue
        white = {"1-0": 1.0, "0-1": 0.0, "1/2-1/2": 0.5}[result]
        points += white if tags.get("White") == "Learned" else 1.0 - white
        games += 1
if games == 0:
    print("FAIL: the match produced no finished games (see match.out)")
    sys.exit(1)
p = points / games
clamped = min(max(p, 0.5 / games), 1 - 0.5 / games)
elo = -400 * math.log10(1 / clamped - 1)
# 95% margin from the score's standard error, through the slope of the Elo curve.
error = math.sqrt(p * (1 - p) / games) if 0 < p < 1 else 0.5 / games
slope = 400 / math.log(10) / (clamped * (1 - clamped))
print(f"Learned against Simple5: {points:g}/{games:g} ({100 * p:.1f}%), Elo difference {elo:+.0f} +/- {1.96 * error * slope:.0f}")
PY
