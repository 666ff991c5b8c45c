#!/usr/bin/env bash
# test-cluster.sh: the snakemake workflow on a Slurm of one node, which it starts and ends. Thirteen sources, of which one is damaged,
# two have one name, and one job is killed: the others are done and these two named. A second run does only what is missing. Needs root; installs
# about 700 MB; takes some minutes.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"
[ "$(id -u)" -eq 0 ] || exec sudo --preserve-env "scripts/$(basename "$0")" "$@"

install "${build_packages[@]}" snakemake slurm-wlm munge python3
build linux zrml zrml_sample

work=$(mktemp -d "${TMPDIR:-/var/tmp}/zrml-cluster.XXXXXX")
# The workflow first, which would submit more jobs, then the jobs, then the daemons; each is given time to end, and then killed.
workflow_process=
clean_up() {
  local process left=10
  [ -z "$workflow_process" ] || kill -KILL -- "-$workflow_process" 2>/dev/null || true
  if [ -e "$work/slurmctld.pid" ]; then
    timeout 10 scancel --full --signal=KILL --user=root 2>/dev/null || true
    timeout 10 scancel --user=root 2>/dev/null || true
    while [ $((left--)) -gt 0 ] && [ -n "$(timeout 5 squeue --noheader 2>/dev/null)" ]; do sleep 1; done
  fi
  for process in "${running[@]}"; do
    (sleep 10 && kill -KILL -- "-$process" 2>/dev/null) &
  done
  end_running
  kill $(jobs -pr) 2>/dev/null || true
  rm -rf --one-file-system "$work"
}
trap clean_up EXIT

fail() {
  echo "Failed: $*" >&2
  tail -n 20 "$work"/{first,second,third,slurmctld}.log >&2 2>/dev/null || true
  exit 1
}

# within SECONDS COMMAND...: waits until it succeeds.
within() {
  local left=$1
  shift
  until "$@" >/dev/null 2>&1; do
    [ $((left--)) -gt 0 ] || fail "no success within the time: $*"
    sleep 1
  done
}

# Two ports that nobody listens at.
mapfile -t ports < <(/usr/bin/python3 -c '
import socket
held = [socket.socket() for _ in range(2)]
for one in held:
    one.bind(("127.0.0.1", 0))
    print(one.getsockname()[1])')

start_cluster() {
  mkdir -p "$work"/{munge,state,spool}
  chmod 755 "$work" "$work/munge"
  head -c 1024 /dev/urandom >"$work/munge/key"
  chmod 400 "$work/munge/key"
  cat >"$work/slurm.conf" <<END
ClusterName=zrml
SlurmctldHost=localhost(127.0.0.1)
SlurmUser=root
SlurmctldPort=${ports[0]}
SlurmdPort=${ports[1]}
AuthType=auth/munge
AuthInfo=socket=$work/munge/socket
CredType=cred/munge
StateSaveLocation=$work/state
SlurmdSpoolDir=$work/spool
SlurmctldPidFile=$work/slurmctld.pid
SlurmdPidFile=$work/slurmd.pid
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
MpiDefault=none
ReturnToService=2
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
NodeName=localhost NodeAddr=127.0.0.1 CPUs=2 RealMemory=4000 State=UNKNOWN
PartitionName=all Nodes=ALL Default=YES MaxTime=INFINITE State=UP
END
  export SLURM_CONF=$work/slurm.conf
  start munged --foreground --force --socket="$work/munge/socket" --key-file="$work/munge/key" --pid-file="$work/munge/pid" \
    --log-file="$work/munge/log" --seed-file="$work/munge/seed" --num-threads=2 >"$work/munged.log" 2>&1
  within 20 test -S "$work/munge/socket"
  start slurmctld -D >"$work/slurmctld.log" 2>&1
  start slurmd -D -N localhost >"$work/slurmd.log" 2>&1
  within 60 sh -c 'sinfo --noheader --format=%t | grep -qx idle'
}

# Eleven sound ones, one of them with a name that no shell may read and two of one name, one cut in the middle, and one whose
# conversion is killed.
odd="odd 'name' \$(touch broken).raw"
make_sources() {
  local number
  build/linux/zrml-sample "$work/runs/plate1/run01.raw"
  for number in 02 03 04 05 06 07 08 09; do cp -r "$work/runs/plate1/run01.raw" "$work/runs/plate1/run$number.raw"; done
  cp -r "$work/runs/plate1/run09.raw" "$work/runs/plate1/run09.RAW"
  mkdir -p "$work/runs/plate2"
  for name in "$odd" damaged.raw killed.raw; do cp -r "$work/runs/plate1/run01.raw" "$work/runs/plate2/$name"; done
  truncate -s 100000 "$work/runs/plate2/damaged.raw/_FUNC001.DAT"
}

# The program as the jobs call it, which waits before it converts one source.
make_program() {
  cat >"$work/zrml" <<END
#!/bin/sh
case "\$1 \$2" in
  "convert "*/killed.raw) [ -e "$work/is-killed" ] || sleep 3600 ;;
esac
exec "$PWD/build/linux/zrml" "\$@"
END
  chmod +x "$work/zrml"
}

# workflow NAME: runs it, with its output in NAME.log.
workflow() {
  start snakemake --snakefile workflows/snakemake/Snakefile --profile "$PWD/workflows/snakemake/slurm" --directory "$work/results" \
    --config sources="$work/runs" zrml="$work/zrml" threads=1 --latency-wait 5 >"$work/$1.log" 2>&1
  workflow_process=$!
}

# ends STATUS: the workflow does so.
ends() {
  local status=0
  finish "$workflow_process" || status=$?
  workflow_process=
  [ $status -eq "$1" ] || fail "the workflow ends with $status, not $1"
}

# Jobs that a run submitted, by rule.
submitted() { grep -c "^rule $2:" "$work/$1.log" || true; }

# expect TEXT COMMAND...: it prints the text.
expect() {
  local wanted=$1 found
  shift
  found=$("$@")
  [ "$found" = "$wanted" ] || fail "$* gives \"$found\", not \"$wanted\""
}

pages() { find "$work/results/pages" -name '*.html' 2>/dev/null || true; }
makes_pages=$(build/linux/zrml page --help >/dev/null 2>&1 && echo 1 || echo 0)

converted() { find "$work/results/mzml" -name '*.mzML' -printf '%f\n' | sort; }
count() { "$@" | wc -l; }
rows() { cut -f 1,3 "$work/results/quality/runs.tsv"; }

# failures NAME: rules and runs that a run of the workflow says have failed, once each.
failures() {
  awk '/^Error in rule / { rule = substr($4, 1, length($4) - 1) }
       rule && /^    log: / { sub(/^    log: logs\/[a-z]*\//, ""); sub(/\.txt.*/, ""); print rule, $0; rule = "" }' "$work/$1.log" | sort -u
}

echo "Starting a cluster"
start_cluster
make_sources
make_program
mkdir "$work/results"

echo "First run"
workflow first
# The job that waits: its comment names the run.
within 900 sh -c 'squeue --noheader --states=RUNNING --format="%j %k" | grep -q "^convert .*killed.raw"'
within 900 sh -c '! squeue --noheader --format="%j %k" | grep -qv "^convert .*killed.raw"'
killed=$(squeue --noheader --format='%i %j %k' | awk '/ convert .*killed\.raw/ { print $1 }')
scancel --full --signal=KILL "$killed"
ends 1
expect "$(printf '%s.mzML\n' "${odd%.raw}" run0{1..9} run09 | sort)" converted
[ -e "$work/results/mzml/plate1/run09.raw/run09.mzML" ] || fail "two sources of one name are not apart"
expect 13 submitted first check
expect 12 submitted first convert
expect $((makes_pages * 12)) count pages
[ ! -e "$work/results/broken" ] || fail "a name was read by a shell"
grep -q "is damaged" "$work/results/logs/check/plate2/damaged.raw.txt" || fail "the log does not name the damage"
expect "check plate2/damaged.raw
convert plate2/killed.raw" failures first
expect 14 count rows
rows | grep -qx $'damaged\tdamaged' || fail "the table does not name the damaged run"

echo "Second run"
touch "$work/is-killed"
workflow second
ends 1
expect 1 submitted second check
expect 1 submitted second convert
expect 0 submitted second quality
expect 12 count converted

echo "Third run, with the damaged source copied again"
rm -r "$work/runs/plate2/damaged.raw"
cp -r "$work/runs/plate1/run01.raw" "$work/runs/plate2/damaged.raw"
workflow third
ends 0
expect 1 submitted third check
expect 1 submitted third convert
expect 1 submitted third quality
expect 13 count converted
expect $((makes_pages * 13)) count pages
links=$(grep -o 'href="./../pages/plate[12]/[^"]*.html"' "$work/results/quality/runs.html" | wc -l)
expect $((makes_pages * 12)) echo "$links"  # of two runs of one name to the first
rows | grep -qx $'damaged\tsound' || fail "the table is not made again"

echo "The workflow does what it should on a cluster."
