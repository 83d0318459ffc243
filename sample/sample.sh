#!/bin/sh
# Makes and plays with a sample Mac. Nothing outside of its folder is touched.
#
#   sample.sh make BUILD_DIR DIR    make it if it is not there, and start the vendors' server
#   sample.sh create BUILD_DIR DIR  make it anew
#   sample.sh up|down|reset DIR     start, stop the server; make the same sample anew
#   sample.sh status|env DIR        what runs; the file to source
#   sample.sh open|close DIR NAME   open an application (--stubborn NAME: one that does not quit)
#   sample.sh answer DIR quit|later answer the prompt that is up
#   sample.sh scene NAME [DIR]      write the state in which the application is to start
# DIR may be left out where CORVANE_ROOT names it. BUILD_DIR is where the programs were built.
set -eu

fail() {
    echo "sample.sh: $1" >&2
    exit "${2:-1}"
}

usage() {
    sed -n '4,11p' "$0" | cut -c 3- >&2
    exit 2
}

programs() {
    for folder in "$1/sample" "$1"; do
        if [ -x "$folder/corvane_sample" ]; then
            (cd "$folder" && pwd)
            return
        fi
    done
    fail "no corvane_sample under $1; build it first"
}

# The sample's own notes: where its programs were built and its port.
noted() { sed -n "s/^$2 //p" "$1/.corvane-sample"; }

isSample() { [ -f "$1/.corvane-sample" ]; }

freePort() {
    # Any port of the private range that nobody answers on; the server complains if it is taken after all.
    port=$((49152 + ($(id -u) * 131 + $$) % 16000))
    while curl -s --noproxy '*' -o /dev/null --max-time 1 "http://127.0.0.1:$port/" || [ $? -ne 7 ]; do
        port=$((port + 1))
    done
    echo "$port"
}

create() {
    build=$(cd "$1" && pwd)
    folder=$2
    from=$(programs "$build")
    if isSample "$folder"; then
        down "$folder"
        port=$(noted "$folder" port)
    else
        port=$(freePort)
    fi
    set -- create "$folder" --port "$port"
    if [ -d "$build/Corvane.app" ]; then set -- "$@" --bundle "$build/Corvane.app"; fi
    "$from/corvane_sample" "$@"
    echo "build $build" >>"$folder/.corvane-sample"
}

serverProcess() {
    pid=$(cat "$1/var/run/vendors.pid" 2>/dev/null) || return 1
    # A stale file must not lead to somebody else's process.
    case "$(readlink "/proc/$pid/exe" 2>/dev/null)" in
        */sample_vendors*) echo "$pid" ;;
        *) return 1 ;;
    esac
}

up() {
    if serverProcess "$1" >/dev/null; then return; fi
    port=$(noted "$1" port)
    from=$(programs "$(noted "$1" build)")
    log="$1/var/log/vendors.log"
    setsid "$from/sample_vendors" "$1" "$port" </dev/null >"$log" 2>&1 &
    tries=100
    until serverProcess "$1" >/dev/null; do
        if [ -s "$log" ]; then fail "$(cat "$log")"; fi
        tries=$((tries - 1))
        if [ $tries -eq 0 ]; then fail "the vendors' server does not start"; fi
        sleep 0.05
    done
}

# The sample's own processes: those whose executable lies below it.
processes() {
    root=$(cd "$1" && pwd -P)
    find /proc -maxdepth 2 -name exe -printf '%h\t%l\n' 2>/dev/null |
        awk -F '\t' -v root="$root/" 'index($2, root) == 1 { sub(/^\/proc\//, ""); sub(/ \(deleted\)$/, ""); print }'
}

# The helpers that serve the sample: they outlive whoever started them, and their executable lies in the bundle.
helpers() {
    root=$(cd "$1" && pwd -P)
    for line in /proc/[0-9]*/cmdline; do
        pid=${line#/proc/} && pid=${pid%/cmdline}
        { tr '\0' '\n' <"$line"; } 2>/dev/null | awk -v root="$root" '
            NR == 1 && $0 !~ /\/CorvaneRootHelper$/ { exit }
            before == "--root" && $0 == root { found = 1 }
            { before = $0 }
            END { exit !found }' && echo "$pid" || :
    done
}

named() { processes "$1" | awk -F '\t' -v name="$2" '{ n = split($2, part, "/"); if (part[n] == name) print $1 }'; }

down() {
    if pid=$(serverProcess "$1"); then
        kill "$pid"
        while serverProcess "$1" >/dev/null; do sleep 0.05; done
    fi
    for pid in $(helpers "$1"); do
        kill "$pid" 2>/dev/null || :
        for _ in 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20; do
            kill -0 "$pid" 2>/dev/null || break
            sleep 0.1
        done
        kill -KILL "$pid" 2>/dev/null || :
    done
    for pid in $(processes "$1" | grep -E '\.app/Contents/MacOS/|/usr/bin/osascript$' | cut -f 1); do
        kill -KILL "$pid" 2>/dev/null || :
    done
}

openApp() {
    folder=$1 option=
    shift
    if [ "${1:-}" = --stubborn ]; then option=$1 && shift; fi
    name=${1%.app}
    executable=$(find "$folder/Applications" "$folder/Users" -path "*/$name.app/Contents/MacOS/$name" 2>/dev/null | head -n 1)
    [ -n "$executable" ] || fail "no application \"$name\" on the sample"
    case "$(od -An -tx1 -N4 "$executable" | tr -d ' ')" in
        7f454c46) ;;
        *) fail "\"$name\" is made for a Mac's processor and cannot be opened here" ;;
    esac
    setsid "$executable" $option </dev/null >/dev/null 2>&1 &
}

closeApp() {
    pids=$(named "$1" "${2%.app}")
    [ -n "$pids" ] || fail "\"$2\" is not open"
    for pid in $pids; do kill "$pid"; done
}

answer() {
    case "$2" in
        quit) signal=USR1 ;;
        later) signal=TERM ;;
        *) usage ;;
    esac
    pids=$(named "$1" osascript)
    [ -n "$pids" ] || fail "no prompt is up"
    for pid in $pids; do kill -$signal "$pid"; done
}

# Of the bundle that belongs to the sample's programs, which lies in their build folder or beside it.
commandLine() {
    for folder in "$1" "$1/.."; do
        if [ -x "$folder/Corvane.app/Contents/MacOS/corvanectl" ]; then
            echo "$folder/Corvane.app/Contents/MacOS/corvanectl"
            return
        fi
    done
    fail "no Corvane.app at $1; build it first"
}

nothingDiscovered=3

scene() {
    build=$(noted "$1" build)
    writer=$(programs "$build")/corvane_sample
    code=0
    "$writer" scene "$2" "$1" || code=$?
    if [ $code -ne $nothingDiscovered ]; then return $code; fi
    echo "Looking for the applications of the sample, once ..." >&2
    ctl=$(commandLine "$build")
    up "$1"
    (. "$1/env" && "$ctl" discover >/dev/null) || fail "corvanectl discover failed"
    "$writer" scene "$2" "$1"
}

status() {
    if pid=$(serverProcess "$1"); then
        echo "vendors: http://127.0.0.1:$(noted "$1" port) (process $pid)"
    else
        echo "vendors: stopped"
    fi
    processes "$1" | sed 's/^/open: /'
}

verb=${1:-}
[ $# -gt 0 ] && shift
case "$verb" in
    make | create)
        [ $# -eq 2 ] || usage
        if [ "$verb" = create ] || ! isSample "$2"; then create "$1" "$2"; fi
        up "$2"
        echo "$2/env"
        exit
        ;;
    up | down | reset | status | env | open | close | answer) ;;
    scene)
        [ $# -eq 1 ] || [ $# -eq 2 ] || usage
        if [ $# -eq 2 ]; then set -- "$2" "$1"; fi
        ;;
    *) usage ;;
esac

if [ $# -gt 0 ] && isSample "$1"; then
    folder=$(cd "$1" && pwd) && shift
else
    folder=${CORVANE_ROOT:-}
    isSample "${folder:-/}" || fail "name the sample's folder, or source its env file" 2
fi
case "$verb" in
    up) up "$folder" ;;
    down) down "$folder" ;;
    reset) create "$(noted "$folder" build)" "$folder" && up "$folder" ;;
    status) status "$folder" ;;
    env) cat "$folder/env" ;;
    open) [ $# -ge 1 ] || usage; openApp "$folder" "$@" ;;
    close) [ $# -eq 1 ] || usage; closeApp "$folder" "$1" ;;
    answer) [ $# -eq 1 ] || usage; answer "$folder" "$1" ;;
    scene) [ $# -eq 1 ] || usage; scene "$folder" "$1" ;;
esac
