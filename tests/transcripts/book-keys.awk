# The records of a book file, each key (from the program's random source) named in order of
# first appearance.
NF != 8 { print "malformed record: " $0; next }
{
    k = $1 " " $2
    if (!(k in name)) name[k] = "key" (++n)
    line = name[k]
    for (i = 3; i <= 8; i++) line = line " " $i
    print line
}
