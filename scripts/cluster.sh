#!/usr/bin/env bash
# Merges in parts on a Slurm cluster of one node: starts munge and Slurm with a configuration, a key
# and sockets of its own in a temporary folder, submits a merge of which one shard fails, repairs
# and repeats that shard, and compares the result with a merge in one go. Stops and removes
# everything at the end. RYX=PROGRAM uses a program that is already built.
# shellcheck source=scripts/lib.sh
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

install_packages "${slurm_packages[@]}"
if [[ -z "${RYX:-}" ]]; then
  install_packages "${build_packages[@]}"
  build release ryx
  RYX=$PWD/build/release/bin/ryx
fi
RYX=$(realpath "$RYX")
PATH=$PATH:/usr/sbin

work=$(mktemp -d)
chmod 755 "$work"
export PELORIN_TEMP_PATH=$work SLURM_CONF=$work/slurm.conf SOURCE_DATE_EPOCH=0
daemons=()

# Ends the daemons in the reverse order, and the jobs that still run.
stop_all() {
  local i
  [[ ${#daemons[@]} -lt 3 ]] || scancel --user="$(id -un)" 2>/dev/null || true
  for ((i = ${#daemons[@]} - 1; i >= 0; i--)); do
    kill "${daemons[i]}" 2>/dev/null || true
    wait "${daemons[i]}" 2>/dev/null || true
  done
  rm -rf "$work"
}
trap stop_all EXIT

start() {
  "$@" >"$work/${1##*/}.out" 2>&1 &
  daemons+=($!)
}

# wait_until SECONDS COMMAND...
wait_until() {
  local end=$((SECONDS + $1))
  shift
  until "$@" &>/dev/null; do
    if ((SECONDS >= end)); then
      echo "No success in time: $*" >&2
      tail -n 20 "$work"/*.out >&2
      return 1
    fi
    sleep 0.2
  done
}

start_munge() {
  mkdir "$work/munge"
  head -c 1024 /dev/urandom >"$work/munge/key"
  chmod 600 "$work/munge/key"
  # --force: the temporary folder is below one that everybody can write to.
  start munged --foreground --force --key-file="$work/munge/key" --socket="$work/munge/socket" \
    --pid-file="$work/munge/pid" --log-file="$work/munge/log" --seed-file="$work/munge/seed"
  wait_until 10 munge --socket="$work/munge/socket" --no-input
}

start_slurm() {
  local host
  host=$(hostname -s)
  mkdir "$work/state" "$work/spool"
  cat >"$SLURM_CONF" <<END
ClusterName=ryx
SlurmctldHost=$host(127.0.0.1)
SlurmUser=$(id -un)
SlurmdUser=$(id -un)
AuthInfo=socket=$work/munge/socket
SlurmctldPort=${SLURM_TEST_PORT:-26817}
SlurmdPort=$((${SLURM_TEST_PORT:-26817} + 1))
StateSaveLocation=$work/state
SlurmdSpoolDir=$work/spool
SlurmctldPidFile=$work/slurmctld.pid
SlurmdPidFile=$work/slurmd.pid
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
MpiDefault=none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
SchedulerParameters=sched_interval=2,bf_interval=2
NodeName=$host NodeAddr=127.0.0.1 CPUs=$(nproc) State=UNKNOWN
PartitionName=all Nodes=ALL Default=YES MaxTime=10 State=UP
END
  start slurmctld -D -c -f "$SLURM_CONF"
  start slurmd -D -c -f "$SLURM_CONF"
  wait_until 20 bash -c "sinfo --noheader --format=%t | grep -q idle"
}

no_jobs() { [[ -z "$(squeue --noheader)" ]]; }

run() {
  printf '$ %s\n' "$*"
  "$@"
}

step "Starting munge and Slurm"
start_munge
start_slurm
run sinfo

step "Merging 12 steps in 4 shards; the second one cannot read an input"
cd "$work"
"$RYX" sample models >/dev/null
run "$RYX" plan --shards 4 --slurm jobs -- models/steps/run*.ryx --natural-order -o all.ryx |
  tail -n 3
mv models/steps/run5.ryx kept
echo damaged >models/steps/run5.ryx
run sh jobs/submit
wait_until 60 no_jobs
run tail -n +1 jobs/logs/shard-*.log
run ls jobs/parts jobs/logs
[[ ! -e all.ryx && ! -e jobs/parts/2.ryx && -e jobs/parts/4.ryx ]]

step "Repeating the shard that failed"
mv kept models/steps/run5.ryx
run sh jobs/submit
wait_until 60 no_jobs
run tail -n 1 jobs/logs/shard-2.log jobs/logs/join.log
run tail -n 2 jobs/logs/verify.log

step "Comparing with a merge in one go"
"$RYX" merge models/steps/run*.ryx --natural-order -o one.ryx >/dev/null
run "$RYX" diff one.ryx all.ryx
