#!/bin/bash
# Smoke match: talvena against fairymax in xboard's match mode, on a virtual
# display. Fails when a game ends without a rules result or an adjudication by
# xboard, when talvena plays or claims an illegal move, or loses on time.
#
#   tests/xboard_match.sh /path/to/talvena [games]
#
# Installs Debian's xboard, xvfb and fairymax when they are missing. The PGN,
# xboard's debug log (the whole engine dialogue) and the results stay in the
# printed work folder.
set -u

if [ $# -lt 1 ] || [ ! -x "$1" ]; then
  echo "usage: $0 /path/to/talvena [games]" >&2
  exit 2
fi
TALVENA=$(readlink -f "$1")
GAMES=${2:-4}

missing=()
[ -x /usr/games/xboard ] || missing+=(xboard)
[ -x /usr/games/fairymax ] || missing+=(fairymax)
command -v xvfb-run >/dev/null || missing+=(xvfb xauth)
if [ ${#missing[@]} -gt 0 ]; then
  echo "installing ${missing[*]}"
  apt-get update -qq && DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${missing[@]}" >/dev/null || exit 2
fi

WORK=$(mktemp -d /tmp/talvena-match.XXXXXX)
PGN=$WORK/match.pgn
LOG=$WORK/xboard.debug
echo "match of $GAMES games, 1 minute + 1 second per move; files in $WORK"

# Each game lasts at most a few minutes at this time control; the outer
# timeout only guards against a hung GUI.
timeout $((GAMES * 480 + 120)) xvfb-run -a /usr/games/xboard \
  -fcp "$TALVENA" -fd "$WORK" \
  -scp /usr/games/fairymax -sd "$WORK" \
  -tc 1 -inc 1 -mg "$GAMES" -matchMode true \
  -sgf "$PGN" -debug -nameOfDebugFile "$LOG" \
  -autoCallFlag true -testLegality true -checkMates true -testClaims true \
  -materialDraws true -trivialDraws true -ruleMoves 50 -repeatsToDraw 3 \
  -adjudicateDrawMoves 200 \
  -popupExitMessage false -popupMoveErrors false -showThinking true \
  >"$WORK/xboard.out" 2>&1
status=$?
[ $status -eq 0 ] || echo "xboard ended with status $status"

if [ ! -s "$PGN" ]; then
  echo "FAIL: no games were saved"
  exit 1
fi

python3 - "$PGN" "$LOG" <<'PY'
import re, sys

pgn = open(sys.argv[1], encoding="latin-1").read()
log = open(sys.argv[2], encoding="latin-1").read() if len(sys.argv) > 2 else ""
games = [g for g in re.split(r"\n(?=\[Event )", pgn) if g.strip()]
# Endings by the rules, by xboard's adjudication, or by the opponent giving up.
fair = re.compile(r"mates|checkmate|stalemate|repetition|insufficient|material|50-move|"
                  r"fifty|adjudication|resigns|draw|wins on time", re.I)
failures = 0
score = {"1-0": (1, 0), "0-1": (0, 1), "1/2-1/2": (0.5, 0.5)}
points = 0.0
for number, game in enumerate(games, 1):
    tag = lambda name: (re.search(r'\[%s "([^"]*)"\]' % name, game) or [None, "?"])[1]
    white, black, result = tag("White"), tag("Black"), tag("Result")
    comments = re.findall(r"\{([^}]*)\}\s*(?:1-0|0-1|1/2-1/2|\*)\s*$", game.strip())
    reason = comments[-1] if comments else "(no reason given)"
    talvena_white = white.lower().startswith("talvena")
    verdict = "ok"
    if result not in score:
        verdict = "FAIL: unfinished game"
    elif not fair.search(reason):
        verdict = "FAIL: ended by neither the rules nor an adjudication"
    elif re.search(r"illegal", game, re.I):
        verdict = "FAIL: an illegal move"
    elif "wins on time" in reason:
        winner_white = reason.lower().startswith("white")
        if winner_white != talvena_white:
            verdict = "FAIL: talvena lost on time"
    if result in score:
        points += score[result][0 if talvena_white else 1]
    if verdict != "ok":
        failures += 1
    print("game %d: %s - %s  %s  {%s}  %s" % (number, white, black, result, reason, verdict))
for line in log.splitlines():
    if re.search(r"illegal move", line, re.I) and "first" in line:
        print("log:", line.strip())
        failures += 1
print("talvena scored %.1f of %d" % (points, len(games)))
sys.exit(1 if failures else 0)
PY
verdict=$?
if [ "$(grep -c '^\[Event ' "$PGN")" -lt "$GAMES" ]; then
  echo "FAIL: only $(grep -c '^\[Event ' "$PGN") of $GAMES games were played"
  verdict=1
fi
[ $verdict -eq 0 ] && echo "PASS" || echo "FAIL"
exit $verdict
