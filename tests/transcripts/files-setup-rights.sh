# A hand-written start-position block: White to move, castling rights 3 for both sides
# although only a1 and h8 hold rooks, an en-passant field -3 (a black double step on the
# c-file) although c7 is occupied, and king fields that do not match the kings. Loaded, the
# rights the rooks do not allow are gone (White keeps the queen side, Black the king side),
# the en-passant capture b5xc6 is refused, and the king fields are those of the kings found.
# The rook that comes to h1 later does not bring White's king-side right back. Saving again
# writes the corrected block.
#   $1: the program   $2: the words fed to it
set -euo pipefail
"$1" <"$2"
