# kovrel-perft's time and speed become T and R; the lines of --divide ("MOVE: COUNT") become one
# line with their number and the sum of their counts.
/^[a-h][1-8][a-h][1-8][nbrq]?: [0-9]+$/ { n++; sum += $2; next }
n { print "- " n " root moves, " sum " leaves"; n = 0 }
{ sub(/ time [0-9]+ ms nps [0-9]+/, " time T ms nps R"); print }
