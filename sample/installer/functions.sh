# What label fragments call. Needs LOGGING, DEBUG and INSTALL to be set, and nothing else: it may be sourced
# by the installer tool or by anybody who evaluates a fragment.

sampleRoot=${sampleRoot:-SAMPLE_ROOT}
sampleTool="$sampleRoot/Library/Application Support/Corvane/sample/bin/sample_tool"
vendorsAddress="VENDORS_ADDRESS"
export no_proxy="127.0.0.1,localhost"

zmodload zsh/datetime
typeset -A levels
levels=(DEBUG 0 INFO 1 WARN 2 ERROR 3 REQ 4)
typeset -g lastLogText="" lastLogRepeats=0

logLine() {
    local now
    strftime -s now '%Y-%m-%d %H:%M:%S' $EPOCHSECONDS
    print -r -- "$now : ${(r:5:)1} : ${label} : $2"
}

# printlog TEXT [LEVEL]: equal texts in a row are counted, not repeated.
printlog() {
    local text=$1 level=${2:-INFO}
    (( ${levels[$level]:-1} < ${levels[${LOGGING:-INFO}]:-1} )) && return 0
    if [[ "$text" == "$lastLogText" ]]; then
        (( lastLogRepeats++ ))
        return 0
    fi
    (( lastLogRepeats )) && logLine $level "Last Log repeated $lastLogRepeats times"
    lastLogText=$text lastLogRepeats=0
    logLine $level "$text"
}

cleanupAndExit() {
    [[ -n "$2" ]] && printlog "$2" ${3:-INFO}
    exit $1
}

# getJSONValue TEXT PATH, where PATH reads like latest.version or [0].tag.
getJSONValue() {
    print -r -- "$1" | "$sampleTool" json "$2"
}

# xpath EXPRESSION < text: the text of the first element or attribute that the expression names last, as in
# string(//item[1]/enclosure/@version) or //title.
xpath() {
    local expression=${${1#string\(}%\)} document=$(cat)
    local name=${expression##*/}
    if [[ "$name" == @* ]]; then
        [[ "$document" =~ "[[:space:]]${name#@}=\"([^\"]*)\"" ]] && print -r -- "$match[1]"
    else
        [[ "$document" =~ "<${name%%\[*}[^>]*>([^<]*)<" ]] && print -r -- "$match[1]"
    fi
}

# versionFromGit OWNER PROJECT: the digits and dots of the latest release's tag.
versionFromGit() {
    local line location=""
    curl -sI --max-time 60 "$vendorsAddress/$1/$2/releases/latest" 2>/dev/null | while read -r line; do
        [[ "${line:l}" == location:* ]] && location=${line%$'\r'}
    done
    local found=${${location##*/}//[^0-9.]/}
    if [[ -z "$found" ]]; then
        printlog "could not retrieve version number for $1/$2" WARN
        return 1
    fi
    print -r -- "$found"
}

# downloadURLFromGit OWNER PROJECT: the download of the latest release.
downloadURLFromGit() {
    print -r -- "$vendorsAddress/download/$2.${type:-dmg}"
}
