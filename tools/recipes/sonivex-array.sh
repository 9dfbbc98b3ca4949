#!/bin/sh
# A Slurm job array that renders the files of a list. Each task renders its share:
#
#   sbatch --array=1-8 --cpus-per-task=4 sonivex-array.sh LIST DIR [OPTIONS OF sonivex render]
#
# The tasks are numbered from 1. LIST, DIR and the inputs are on storage that all nodes share. Submit the same command
# again after a failure or a time limit: finished files are skipped. The job fails if a file fails; the tasks' logs end
# with the summaries.
#SBATCH --job-name=sonivex
#SBATCH --output=sonivex-%A-%a.log

if [ $# -lt 2 ]; then
    echo "usage: sbatch --array=1-N [--cpus-per-task=C] $0 LIST DIR [OPTIONS OF sonivex render]" >&2
    exit 2
fi
if [ "${SLURM_ARRAY_TASK_MIN:-0}" != 1 ]; then
    echo "submit this as a job array whose tasks are numbered from 1: sbatch --array=1-N" >&2
    exit 2
fi
list=$1 folder=$2
shift 2
exec sonivex render --batch "$list" --output-folder "$folder" --jobs "${SLURM_CPUS_PER_TASK:-1}" \
    --shard "$SLURM_ARRAY_TASK_ID/$SLURM_ARRAY_TASK_MAX" "$@"
