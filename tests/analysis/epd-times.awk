# Times become T, and so does the move played where only found or missed is certain: any move
# but Qxd5 avoids the poisoned pawn, and the static choice at depth 1 is some move other than
# Qg6 (the line says found or missed by comparing it with those).
{ sub(/time [0-9]+ ms/, "time T ms") }
/^(poisoned|WAC\.001) / {
    match($0, /^[^ ]+ +[a-z]+ +/)
    rest = substr($0, RLENGTH + 1)
    $0 = substr($0, 1, RLENGTH) "M" substr(rest, index(rest, " "))
}
{ print }
