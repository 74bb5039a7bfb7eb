# The BookFile default is where the program found a book: its installed data folder (whose name
# ends in share/games/kovrel), the same folder beside an installation around the program, the
# program's own folder, or else plain "openings.dat" in the current folder. The places are
# tried in that order, so a book found in the program's folder means there was none in the
# installation around it, and the plain name means there was none beside the program.
function exists(path,    line, r) {
    r = (getline line < path)
    close(path)
    return r >= 0
}
/^option name BookFile type string default / {
    path = substr($0, length("option name BookFile type string default ") + 1)
    folder = program
    sub(/\/[^\/]*$/, "", folder)
    around = folder "/../share/games/kovrel/openings.dat"
    beside = folder "/openings.dat"
    if (path ~ /^\/.*\/share\/games\/kovrel\/openings\.dat$/ && exists(path)) {
        ok = path == around || !exists(around)
    } else if (path == beside) {
        ok = exists(beside) && !exists(around)
    } else if (path == "openings.dat") {
        ok = !exists(beside) && !exists(around)
    } else {
        ok = 0
    }
    print ok ? "option name BookFile type string default (the book found)" : "BookFile default not where the program looks: " $0
    next
}
{ print }
