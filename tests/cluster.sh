#!/usr/bin/env bash
# A tournament's slices on real schedulers. One gauntlet of two embedded souls
# (16 games, fixed seed, random openings from examples/games.pgn) is played in
# one process, then as a 4-task Slurm job array (examples/slurm/tourney.sbatch)
# and as 4 GNU parallel jobs. Each spread run must play the games of the single
# run (round, game, players, opening), and `talvena -use=merge` over its 4
# slice files must print the figures of one file holding all their lines.
#   tests/cluster.sh [build/talvena]
#
# Runs as root (it calls itself again through sudo otherwise). When
# /etc/slurm/slurm.conf exists and its cluster answers sinfo, that cluster is
# used (TMPDIR must then name a folder that every node sees); otherwise a
# one-node cluster is started here: munged, slurmctld and slurmd with a key and
# a slurm.conf of their own in a scratch folder, stopped again at the end.
set -euo pipefail
TALVENA=$(readlink -f "${1:-build/talvena}")
if [ "$(id -u)" -ne 0 ]; then exec sudo -E bash "$(readlink -f "$0")" "$TALVENA"; fi
cd "$(dirname "$0")/.."
ROOT=$PWD

packages=(slurmctld slurmd slurm-client munge parallel)
missing=()
for p in "${packages[@]}"; do dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p"); done
if ((${#missing[@]})); then
  echo "installing: ${missing[*]}"
  apt-get update -qq
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${missing[@]}" >/dev/null
fi

WORK=$(mktemp -d "${TMPDIR:-/tmp}/talvena-cluster.XXXXXX")
chmod 755 "$WORK"  # munged wants every folder above its socket open to all
JOB_NAME=talvena-cluster-test
OWN_CLUSTER=0
SUBMITTED=0
SBATCH_PID=
failures=0

stop_daemon() {  # pid file
  [ -f "$1" ] || return 0
  local pid
  pid=$(cat "$1")
  kill "$pid" 2>/dev/null || return 0
  for _ in $(seq 50); do
    ps -o stat= -p "$pid" | grep -qv Z || return 0  # gone, or a zombie waiting for its parent
    sleep 0.2
  done
  kill -9 "$pid" 2>/dev/null || true
}

cleanup() {
  [ "$SUBMITTED" = 0 ] || scancel --user="$(id -un)" --name="$JOB_NAME" 2>/dev/null || true
  [ -z "$SBATCH_PID" ] || kill "$SBATCH_PID" 2>/dev/null || true
  if [ "$OWN_CLUSTER" = 1 ]; then
    for daemon in slurmd slurmctld munged; do stop_daemon "$WORK/$daemon.pid"; done
  fi
  rm -rf "$WORK"
}
trap cleanup EXIT
trap 'exit 130' INT TERM

check() {  # description, then a command that holds when the check passes
  local what=$1
  shift
  if "$@"; then
    echo "PASS $what"
  else
    echo "FAIL $what"
    failures=$((failures + 1))
  fi
}

# The example event of two souls made small (16 games at 500 ms + 50 ms, cut
# at 120 plies), its games played in the log folder $WORK/$1.
write_event() {
  sed -e 's|name="souls"|name="cluster"|' -e 's|<rounds>[0-9]*<|<rounds>8<|' -e 's|increment_ms="[0-9]*"|increment_ms="50"|' \
    -e "s|<logfolder>[^<]*<|<logfolder>$WORK/$1<|" -e "s|<openings>|<openings>$ROOT/|" \
    -e 's|</options>|  <max_plies>120</max_plies>\n  </options>|' "$ROOT/examples/slurm/souls.xml" >"$WORK/$1.xml"
}

# Round, game, players and opening of every game in the files, sorted.
games_of() {
  awk -F'\t' 'FNR > 1 { print $1 "\t" $2 "\t" $3 "\t" $4 "\t" $9 }' "$@" | sort
}

same_games() {  # folder
  [ "$(games_of "$WORK/single/cluster-1-results.tsv" | wc -l)" -eq 16 ] &&
    diff <(games_of "$WORK/single/cluster-1-results.tsv") <(games_of "$WORK/$1"/cluster-1-*-of-4-results.tsv)
}

# The merge of the 4 slice files against the merge of one file holding all
# their lines (beside it, the event file the merge reads); only the line
# counting the files may differ.
same_merge() {  # folder
  local slices=("$WORK/$1"/cluster-1-{0,1,2,3}-of-4-results.tsv) whole="$WORK/$1-whole"
  mkdir -p "$whole"
  { head -n 1 "${slices[0]}"; tail -q -n +2 "${slices[@]}"; } >"$whole/cluster-1-results.tsv"
  cp "$WORK/$1/cluster-1-event.txt" "$whole/cluster-1-event.txt"
  "$TALVENA" -use=merge "${slices[@]}" </dev/null >"$WORK/$1-merge.txt" &&
    "$TALVENA" -use=merge "$whole/cluster-1-results.tsv" </dev/null >"$WORK/$1-whole-merge.txt" &&
    grep -qx '# merge: 16 games from 4 files' "$WORK/$1-merge.txt" &&
    grep -q '^# Simple5 vs BattleField: games 16 ' "$WORK/$1-merge.txt" &&
    diff <(grep -v '^# merge: ' "$WORK/$1-merge.txt") <(grep -v '^# merge: ' "$WORK/$1-whole-merge.txt")
}

compare() {  # how, folder
  check "$1: 4 slice files written" test "$(ls "$WORK/$2"/cluster-1-*-of-4-results.tsv 2>/dev/null | wc -l)" -eq 4
  check "$1: the 4 slices played the games of the single run" same_games "$2"
  check "$1: the merge of the 4 slices equals the merge of their lines in one file" same_merge "$2"
}

start_own_cluster() {
  # The addresses are given so that a container whose name does not resolve
  # works too, and ports of its own so that two runs on one machine do not meet.
  local host port conf="$WORK/slurm.conf"
  host=$(hostname -s)
  port=$((20000 + RANDOM % 20000))
  head -c 1024 /dev/urandom >"$WORK/munge.key"
  chmod 400 "$WORK/munge.key"
  OWN_CLUSTER=1
  munged --key-file="$WORK/munge.key" --socket="$WORK/munge.socket" --pid-file="$WORK/munged.pid" \
    --log-file="$WORK/munged.log" --seed-file="$WORK/munged.seed" || return 1
  mkdir -p "$WORK/slurm-state" "$WORK/slurmd-spool"
  cat >"$conf" <<EOF
ClusterName=talvena
SlurmctldHost=$host(127.0.0.1)
SlurmctldPort=$port
SlurmdPort=$((port + 1))
SlurmUser=root
SlurmdUser=root
AuthType=auth/munge
CredType=cred/munge
AuthInfo=socket=$WORK/munge.socket
MpiDefault=none
StateSaveLocation=$WORK/slurm-state
SlurmdSpoolDir=$WORK/slurmd-spool
SlurmctldPidFile=$WORK/slurmctld.pid
SlurmdPidFile=$WORK/slurmd.pid
SlurmctldLogFile=$WORK/slurmctld.log
SlurmdLogFile=$WORK/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
SchedulerType=sched/builtin
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
ReturnToService=2
NodeName=$host NodeAddr=127.0.0.1 CPUs=$(nproc) State=UNKNOWN
PartitionName=debug Nodes=$host Default=YES MaxTime=INFINITE State=UP
EOF
  export SLURM_CONF=$conf
  slurmctld -f "$conf" && slurmd -f "$conf" || return 1
  for _ in $(seq 60); do
    [ "$(sinfo -h -o %t 2>/dev/null)" = idle ] && return 0
    sleep 1
  done
  tail -n 20 "$WORK/slurmctld.log" "$WORK/slurmd.log" "$WORK/munged.log" || true
  return 1
}

echo "# single process"
write_event single
if ! "$TALVENA" -use=tourney -ini="$WORK/single.xml" </dev/null >"$WORK/single.out" 2>&1; then
  tail -n 20 "$WORK/single.out"
  echo "FAIL single process: $TALVENA -use=tourney failed; nothing to compare with"
  exit 1
fi
echo "# single process: ${SECONDS} s"

echo "# Slurm: a 4-task job array"
write_event slurm
if [ -f /etc/slurm/slurm.conf ] && timeout 20 sinfo >/dev/null 2>&1; then
  echo "# the cluster of /etc/slurm/slurm.conf"
  slurm_ready=0
else
  start_own_cluster && slurm_ready=0 || slurm_ready=1
fi
check "slurm: the cluster answers sinfo, its node idle" test "$slurm_ready" -eq 0
if [ "$slurm_ready" -eq 0 ]; then
  mkdir -p "$WORK/slurm-jobs"
  SUBMITTED=1
  # sbatch --wait outlives Ctrl-C; waited for in the background, the trap ends it.
  (cd "$WORK/slurm-jobs" && TALVENA=$TALVENA exec sbatch --wait --job-name="$JOB_NAME" --array=0-3 \
    "$ROOT/examples/slurm/tourney.sbatch" "$WORK/slurm.xml" >/dev/null) &
  SBATCH_PID=$!
  wait "$SBATCH_PID" || tail -n 20 "$WORK"/slurm-jobs/* || true
  SBATCH_PID=
  compare slurm slurm
fi
echo "# Slurm: ${SECONDS} s so far"

echo "# GNU parallel: 4 local jobs"
write_event parallel
parallel -j4 "$TALVENA" -use=tourney -ini="$WORK/parallel.xml" -shard={}/4 \
  '</dev/null' ">$WORK/parallel-{}.out" '2>&1' ::: 0 1 2 3 || tail -n 20 "$WORK"/parallel-*.out
compare parallel parallel
echo "# GNU parallel: ${SECONDS} s so far"

if ((failures)); then
  echo "FAIL tests/cluster.sh: $failures checks failed"
  exit 1
fi
echo "PASS tests/cluster.sh: every check held"
