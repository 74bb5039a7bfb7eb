# Shared helpers for the GUI game scripts in tools/gui/ (sourced, not run).
#
# Every script here runs a real chess GUI on a private Xvfb display with a
# private HOME, so nothing of the user's desktop or configuration is touched,
# and every wait is bounded so a stuck GUI makes the script fail instead of
# hanging.

# Debian's games live in /usr/games; /usr/bin goes before /usr/local/bin so
# the real ImageMagick `import` is used.
export PATH="/usr/games:/usr/bin:/bin:/usr/sbin:/sbin:/usr/local/bin"
# Keep GTK from looking for an accessibility bus we don't run.
export NO_AT_BRIDGE=1

log() { printf '[%s] %s\n' "$(date +%H:%M:%S)" "$*" >&2; }
die() { log "ERROR: $*"; exit 1; }

# need_packages CMD:PACKAGE ... -- installs the Debian packages of missing
# commands when run as root, otherwise just reports what is missing.
need_packages() {
    local missing=() pair cmd pkg
    for pair in "$@"; do
        cmd=${pair%%:*} pkg=${pair#*:}
        command -v "$cmd" >/dev/null 2>&1 || [[ -x $cmd ]] || missing+=("$pkg")
    done
    ((${#missing[@]})) || return 0
    if [[ $(id -u) -eq 0 ]]; then
        log "installing: ${missing[*]}"
        apt-get update -qq >/dev/null
        DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${missing[@]}" >/dev/null \
            || die "apt-get install ${missing[*]} failed"
    else
        die "missing packages (run as root to install them): ${missing[*]}"
    fi
}

# copy_engine SRC DIR -- copies the engine and the openings.dat that sits
# beside it into DIR, so a rebuild during the game cannot change the binary
# under the GUI.  Prints the path of the copy.
copy_engine() {
    local src=$1 dir=$2
    [[ -x $src ]] || die "engine not found or not executable: $src"
    mkdir -p "$dir"
    cp "$src" "$dir/kovrel-uci"
    [[ -f $(dirname "$src")/openings.dat ]] && cp "$(dirname "$src")/openings.dat" "$dir/"
    printf '%s\n' "$dir/kovrel-uci"
}

# start_xvfb WIDTHxHEIGHT -- starts a private Xvfb (it picks a free display
# number itself via -displayfd) and exports DISPLAY.  Sets XVFB_PID.
start_xvfb() {
    local size=${1:-1280x1024} fifo n
    fifo=$(mktemp -u)
    mkfifo "$fifo"
    Xvfb -displayfd 3 -screen 0 "${size}x24" -nolisten tcp 3>"$fifo" >/dev/null 2>&1 &
    XVFB_PID=$!
    if ! read -r -t 20 n <"$fifo"; then
        rm -f "$fifo"
        die "Xvfb did not report a display within 20 s"
    fi
    rm -f "$fifo"
    export DISPLAY=":$n"
    log "Xvfb pid $XVFB_PID on $DISPLAY ($size)"
}

# wait_for SECONDS DESCRIPTION COMMAND... -- polls COMMAND every second.
wait_for() {
    local secs=$1 what=$2 i
    shift 2
    for ((i = 0; i < secs; i++)); do
        "$@" && return 0
        sleep 1
    done
    log "timed out after ${secs}s waiting for: $what"
    return 1
}

# find_window NAME-REGEX -- first visible window whose title matches.
find_window() { xdotool search --onlyvisible --name "$1" 2>/dev/null | head -1 || true; }

# window_geometry WID -- sets WX WY WW WH (absolute position and size).
window_geometry() {
    eval "$(xdotool getwindowgeometry --shell "$1")"
    WX=$X WY=$Y WW=$WIDTH WH=$HEIGHT
}

screenshot() { import -window root "$1" && log "screenshot $1"; }

# stop_group PID -- ends the process group we started with setsid, politely
# first, then for good.
stop_group() {
    local pid=$1 i
    [[ -n $pid ]] || return 0
    kill -TERM -- "-$pid" 2>/dev/null || return 0
    for ((i = 0; i < 10; i++)); do
        kill -0 -- "-$pid" 2>/dev/null || return 0
        sleep 0.5
    done
    kill -KILL -- "-$pid" 2>/dev/null || true
}

# open_scratch NAME -- a scratch folder $WORK for one run (removed at exit, with the GUI's
# process group $GUI_PID and the X server), and $KOVREL, a copy of $ENGINE inside it.
open_scratch() {
    WORK=$(mktemp -d "/tmp/$1.XXXXXX")
    GUI_PID=
    trap close_scratch EXIT
    KOVREL=$(copy_engine "$ENGINE" "$WORK/engine")
    log "engine copy: $KOVREL"
}
close_scratch() {
    stop_group "$GUI_PID"
    [[ -n ${XVFB_PID:-} ]] && kill "$XVFB_PID" 2>/dev/null
    rm -rf "$WORK"
}
