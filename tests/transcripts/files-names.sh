# File names in the console. A missing file and a path in a folder that does not exist give
# the fopen error lines, and the game goes on unchanged. A name of 64 characters is refused
# for save and for load before any file is touched; one of 63 characters is used. A name
# without a "." is read as a game file. After the run the driver lists the files left in
# the scratch folder (its own output file aside): only the game saved under the 63-character
# name and the game file given at the start.
#   $1: the program   $2: the words fed to it
set -euo pipefail
"$1" <"$2"
echo "files left:"
LC_ALL=C ls -1A | grep -v '^actual\.out$'
