#!/usr/bin/env bash
# Runs the program on one transcript and compares what it prints with the expected text.
#   run_transcript.sh KOVREL DIR NAME
# In DIR: NAME.in       the words fed to standard input
#         NAME.out      the expected standard output, exactly
#         NAME.args     optional: the command-line arguments (one line)
#         NAME.status   optional: the expected exit status (default 0)
#         NAME.env      optional: environment assignments, one per line
#         NAME.sh       optional: a driver run instead of plain input redirection; it gets the
#                       program and NAME.in as arguments and prints the program's output
#         NAME.setup/   optional: files copied into the scratch folder before the run
#         NAME.files/   optional: files the run must leave in the scratch folder, exactly
# The program runs in a fresh scratch folder.
set -euo pipefail
kovrel=$(realpath "$1") dir=$(realpath "$2") name=$3
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
[[ -d $dir/$name.setup ]] && cp -r "$dir/$name.setup/." "$scratch/"
args=()
[[ -f $dir/$name.args ]] && read -ra args <"$dir/$name.args"
envs=()
[[ -f $dir/$name.env ]] && mapfile -t envs <"$dir/$name.env"
input=$dir/$name.in
[[ -f $input ]] || input=/dev/null
expected_status=0
[[ -f $dir/$name.status ]] && expected_status=$(<"$dir/$name.status")

cd "$scratch"
status=0
if [[ -f $dir/$name.sh ]]; then
    env ${envs[@]+"${envs[@]}"} bash "$dir/$name.sh" "$kovrel" "$input" >actual.out || status=$?
else
    env ${envs[@]+"${envs[@]}"} "$kovrel" ${args[@]+"${args[@]}"} <"$input" >actual.out || status=$?
fi
ok=1
if ! diff -u "$dir/$name.out" actual.out; then
    echo "transcript $name: output differs"
    ok=0
fi
if [[ $status != "$expected_status" ]]; then
    echo "transcript $name: exit status $status, expected $expected_status"
    ok=0
fi
if [[ -d $dir/$name.files ]]; then
    for file in "$dir/$name.files"/*; do
        base=$(basename "$file")
        if ! cmp -s "$file" "$scratch/$base"; then
            echo "transcript $name: file $base differs"
            diff -u "$file" "$scratch/$base" || true
            ok=0
        fi
    done
fi
((ok == 1))
