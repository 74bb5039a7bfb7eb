#!/usr/bin/env bash
# Checks kovrel-perft against the reference counts of a perft EPD file
# (lines "<fen> ;D1 n ;D2 n ..."), for every depth whose count lies in [MIN, MAX]. Further
# arguments go to kovrel-perft before the depth (--full: every leaf made and tested).
#   perft.sh KOVREL_PERFT EPD MIN MAX [OPTION...]
set -euo pipefail
perft=$1 epd=$2 min=$3 max=$4
shift 4
checked=0 failed=0
while IFS= read -r line || [[ -n $line ]]; do
    [[ -z $line || $line == \#* ]] && continue
    fen=${line%%;*}
    fen=${fen% }
    rest=${line#*;}
    IFS=';' read -ra fields <<<"$rest"
    for field in "${fields[@]}"; do
        read -r tag count <<<"$field"
        depth=${tag#D}
        if ((count < min || count > max)); then continue; fi
        got=$("$perft" "$@" "$depth" "$fen" | awk '/^nodes /{print $2}')
        checked=$((checked + 1))
        if [[ $got != "$count" ]]; then
            echo "FAIL depth $depth of $fen: expected $count, got $got"
            failed=$((failed + 1))
        else
            echo "ok   depth $depth of $fen: $count"
        fi
    done
done <"$epd"
echo "$checked counts checked, $failed failed"
((checked > 0 && failed == 0))
