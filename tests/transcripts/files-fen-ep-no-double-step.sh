# The en-passant field of a FEN position is kept only when it names a real double step of the
# side not to move; otherwise it counts as "-". All positions have a castling field of
# letters before it. With White to move and the field e6: refused when e7 is occupied (a.fen),
# when the field names rank 3 (b.fen), when no black pawn stands on e5 (c.fen); kept when e6
# and e7 are empty and the pawn is on e5 (d.fen). With Black to move and the field e3:
# refused when e2 is occupied (e.fen) or the field names rank 6 (f.fen), kept otherwise
# (g.fen). A refused capture is an unknown word in xboard mode.
#   $1: the program   $2: the words fed to it
set -euo pipefail
"$1" -xboard -easy <"$2"
