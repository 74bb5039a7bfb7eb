# auto232 switches the file mode on; the next word then comes from "hismove.txt" instead of
# the keyboard. The scratch folder already holds that file with the word "auto232", so the
# program finds it at once ("ok", no dots), deletes it and switches the mode off again; the
# remaining words (help, quit) are read from standard input, and help shows the mode as 0.
# The file must be gone afterwards, and no move file is written (no move was played).
#   $1: the program   $2: the words fed to it
set -uo pipefail
"$1" <"$2"
status=$?
[[ -e hismove.txt ]] && echo "hismove.txt was not deleted"
[[ -e mymove.txt ]] && echo "mymove.txt was written"
exit "$status"
