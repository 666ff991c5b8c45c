#!/bin/sh
# cancel.sh JOB...: ends jobs when snakemake is interrupted.
exec scancel "$@"
