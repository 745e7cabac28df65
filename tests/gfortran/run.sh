#!/bin/bash
# run.sh ADAPTER PROGRAM.f90 WORKDIR [asan]
# Builds PROGRAM at -O0 and at -O2 -finline-matmul-limit=0 and runs each
# without the adapter, with it, and with it and INTRINS_GFORTRAN_TRACE=1.
# Passes when every run exits 0 with the same output, the untraced run prints
# nothing of the adapter's, and the trace shows each entry named on the
# program's "! serves:" lines served and never forwarded (with a trailing +:
# served, forwarded or not), and each one on its "! forwards:" lines forwarded.
set -u
adapter=$1 src=$2 work=$3 mode=${4:-plain}
name=$(basename "$src" .f90)
mkdir -p "$work"
preload=$adapter
if [ "$mode" = asan ]; then
    preload="$(gfortran -print-file-name=libasan.so) $adapter"
    export ASAN_OPTIONS=detect_leaks=0
fi
serves=$(sed -n 's/^! serves://p' "$src")
forwards=$(sed -n 's/^! forwards://p' "$src")
fail=0
for opt in "-O0" "-O2 -finline-matmul-limit=0"; do
    exe=$work/$name${opt//[ =-]/_}
    gfortran -cpp -ffree-line-length-none -fno-range-check -ffpe-summary=none $opt "$src" -o "$exe" || exit 1
    "$exe" > "$exe.base" 2>&1 || { echo "$name $opt: fails without the adapter"; cat "$exe.base"; fail=1; }
    LD_PRELOAD="$preload" "$exe" > "$exe.out" 2>&1 || { echo "$name $opt: fails with the adapter"; cat "$exe.out"; fail=1; }
    cmp -s "$exe.base" "$exe.out" || { echo "$name $opt: output differs with the adapter"; fail=1; }
    INTRINS_GFORTRAN_TRACE=1 LD_PRELOAD="$preload" "$exe" > /dev/null 2> "$exe.trace"
    for s in $serves; do
        m=0; [[ $s == *+ ]] && m="[0-9]+" s=${s%+}
        grep -Eq "^intrins-gfortran: _gfortran_$s served [1-9][0-9]* forwarded $m\$" "$exe.trace" ||
            { echo "$name $opt: _gfortran_$s not served (or forwarded)"; fail=1; }
    done
    for s in $forwards; do
        grep -Eq "^intrins-gfortran: _gfortran_$s served [0-9]+ forwarded [1-9]" "$exe.trace" ||
            { echo "$name $opt: _gfortran_$s not forwarded"; fail=1; }
    done
    [ $fail = 0 ] || cat "$exe.trace"
done
exit $fail
