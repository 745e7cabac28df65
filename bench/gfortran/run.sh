#!/bin/bash
# run.sh PROGRAM ADAPTER - runs the adapter benchmark on libgfortran alone and
# with the adapter preloaded, and prints both times and their ratio.
set -eu
prog=$1 adapter=$2
plain=$("$prog")
adapted=$(LD_PRELOAD="$adapter" "$prog")
printf '%-40s %12s %12s %8s\n' operation libgfortran adapter ratio
paste -d';' <(echo "$plain") <(echo "$adapted") |
    awk -F';' '{ printf "%-40s %11.4fs %11.4fs %7.2fx\n", $1, $2, $4, $2 / $4 }'
