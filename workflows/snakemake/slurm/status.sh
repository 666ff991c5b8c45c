#!/bin/sh
# status.sh JOB: "running", "success" or "failed", as snakemake asks. Without it a job that dies before its script begins
# would be waited for without end.
answer=$(scontrol show job "$1" --oneliner 2>&1)
case $answer in
  JobId=*) state=$(printf '%s' "$answer" | sed -n 's/.* JobState=\([A-Z_]*\).*/\1/p') ;;
  # The controller forgets jobs after some minutes; accounting, where there is any, remembers them.
  *"Invalid job id"*) state=$(sacct --jobs="$1" --allocations --noheader --format=State 2>/dev/null | sed 's/[^A-Z_].*//') ;;
  # It does not answer at the moment, and nothing is known of the job.
  *) state=PENDING ;;
esac
case $state in
  COMPLETED) echo success ;;
  PENDING | CONFIGURING | RUNNING | COMPLETING | SUSPENDED | REQUEUED | RESIZING | STAGE_OUT | SIGNALING) echo running ;;
  *) echo failed ;;
esac
