#!/bin/zsh --no-rcs
# The sample Mac's installer tool: it speaks the command line, log lines and exit codes of the tool that Macs
# have, and works on nothing but the folder tree that it was made for. A copy of it works on the same tree, and with
# DEBUG=1 leaves its download beside itself.
#
#   Installomator.sh LABEL [KEY=value ...]
#
# To order, by files under Library/Application Support/Corvane/sample: fail/<label> (an exit code; 0 claims
# success without having installed; 129 to 159 dies by that signal), delay/<label> (seconds), garbage/<label>
# (noise on the output), answer/<label> (quit, later, timeout), presenting (names of programs that keep the
# display awake).

export PATH=/usr/bin:/bin:/usr/sbin:/sbin
umask 022
setopt no_nomatch

VERSION="10.9"
VERSIONDATE="2026-07-03"

workFolder=${0:A:h}
sampleRoot=SAMPLE_ROOT
scriptFolder="$sampleRoot/Library/Application Support/Corvane"
sampleControl="$scriptFolder/sample"

# What the caller may set.
DEBUG=1
NOTIFY=success
PROMPT_TIMEOUT=86400
BLOCKING_PROCESS_ACTION=tell_user
LOGO=appstore
IGNORE_APP_STORE_APPS=no
SYSTEMOWNER=0
INSTALL=""
REOPEN=yes
INTERRUPT_DND=yes
IGNORE_DND_APPS=""
LOGGING=INFO
RETURN_LABEL_NAME=""

source "$scriptFolder/fragments/functions.sh" || exit 1
source "$scriptFolder/fragments/install.sh" || exit 1
source "$scriptFolder/fragments/blocking.sh" || exit 1

promptProcess=""
tmpDir=""
curlOptions=()
updateToolArguments=()

cleanupAndExit() {
    [[ -n "$tmpDir" && $DEBUG != 1 ]] && rm -rf "$tmpDir"
    case $1 in
        10|12|25) ;;
        *) reopenClosedProcesses ;;
    esac
    if [[ -n "$2" ]]; then
        if (( $1 != 0 )); then printlog "ERROR: $2" ${3:-ERROR}; else printlog "$2" ${3:-INFO}; fi
    fi
    printlog "################## End Installomator, exit code $1" REQ
    exit $1
}

# Told to stop: the prompt must not outlive the run.
TRAPTERM() {
    [[ -n "$promptProcess" ]] && kill -KILL $promptProcess 2>/dev/null
    [[ -n "$tmpDir" && $DEBUG != 1 ]] && rm -rf "$tmpDir"
    exit 143
}

listLabels() {
    label=""
    printlog "no label provided, printing labels" REQ
    grep -hE '^[a-z0-9_-]+(\)|\|\\)$' "$scriptFolder"/fragments/labels/*.sh | tr -d ')|\\' | sort
}

applyArguments() {
    local argument
    for argument in "${callerArguments[@]}"; do
        [[ "$argument" == *=* ]] && eval "$argument"
    done
}

# The first fragment, by file name, whose head has the label as a pattern. Others are not even read.
fragmentFile() {
    [[ "$label" =~ '^[a-z0-9_-]+$' ]] || return 1
    grep -lE "^([a-z0-9_-]+\\|)*$label(\\)|\\|)" "$scriptFolder"/fragments/labels/*.sh 2>/dev/null | head -1
}

evaluateLabel() {
    [[ "$label" == valuesfromarguments ]] && return 0
    local file="$(fragmentFile)"
    [[ -n "$file" ]] || return 1
    labelFound=1
    eval "case \$label in
$(<$file)
*) labelFound=0 ;;
esac" || true
    (( labelFound ))
}

rejectIncompleteLabel() {
    local key
    for key in name type downloadURL expectedTeamID; do
        if [[ -z "${(P)key}" ]]; then
            printlog "ERROR: need to provide '$key'" ERROR
            exit 1
        fi
    done
}

respectDisplaySleepAssertion() {
    [[ $INTERRUPT_DND == no && -f "$sampleControl/presenting" ]] || return
    local program
    for program in ${(f)"$(<$sampleControl/presenting)"}; do
        (( ${${(s:,:)IGNORE_DND_APPS}[(Ie)$program]} )) && continue
        cleanupAndExit 24 "active display sleep assertion detected, aborting" ERROR
    done
}

applyDefaults() {
    appName=${appName:-"$name.app"}
    versionKey=${versionKey:-CFBundleShortVersionString}
    archiveName=${archiveName:-"$name.$type"}
    (( $#blockingProcesses )) || blockingProcesses=("$name")
    [[ -n "$targetDir" ]] || case $type in
        pkg*) targetDir="/" ;;
        *) targetDir="/Applications" ;;
    esac
    if [[ $INSTALL == force || $IGNORE_APP_STORE_APPS == yes ]]; then updateTool=""; fi
    systemVersion="$(plistValue "$sampleRoot/System/Library/CoreServices/SystemVersion.plist" ProductVersion)"
}

makeWorkFolder() {
    if [[ $DEBUG == 1 ]]; then
        tmpDir=$workFolder
    else
        tmpDir="$(mktemp -d "$sampleRoot/tmp/run.XXXXXX")" || cleanupAndExit 13 "could not create a folder for the download" ERROR
    fi
}

stopWhenCurrent() {
    if [[ -z "$appNewVersion" ]]; then
        printlog "Latest version not specified."
        return
    fi
    printlog "Latest version of $name is $appNewVersion"
    [[ "$appversion" == "$appNewVersion" ]] || return
    if [[ $DEBUG == 1 ]]; then
        printlog "DEBUG mode 1 enabled, not exiting, but there is no new version of app." WARN
    elif [[ $INSTALL == force ]]; then
        printlog "Using force to install anyway."
    else
        printlog "There is no newer version available."
        cleanupAndExit 0 "No newer version." REQ
    fi
}

if [[ "$1" == "/" ]]; then shift 3; fi
if (( $# == 0 )); then
    listLabels
    exit 0
fi
label=${1:l}
shift
callerArguments=()
while (( $# )) && [[ -n "$1" ]]; do
    callerArguments+=("$1")
    shift
done

case $label in
    version) print -r -- "$VERSION"; exit 0 ;;
    longversion) printlog "Installomator: version $VERSION ($VERSIONDATE)" REQ; exit 0 ;;
esac

for argument in "${callerArguments[@]}"; do
    [[ "$argument" == *=* ]] && printlog "setting variable from argument $argument" REQ
done
applyArguments
[[ $DEBUG == 0 ]] || LOGGING=DEBUG
printlog "################## Start Installomator v. $VERSION, date $VERSIONDATE" REQ
printlog "################## $label" REQ
# Whoever owns the sample is its root.
if [[ $DEBUG == 0 && ! -O "$sampleRoot" && $EUID != 0 ]]; then
    cleanupAndExit 6 "not running as root, exiting" ERROR
fi

if ! evaluateLabel; then
    printlog "ERROR: unknown label $label" ERROR
    exit 1
fi
applyArguments
rejectIncompleteLabel
if [[ "$RETURN_LABEL_NAME" == 1 ]]; then
    print -r -- "$name"
    exit 0
fi
respectDisplaySleepAssertion
applyDefaults
makeWorkFolder
getAppVersion
printlog "appversion: $appversion"
stopWhenCurrent
if [[ -n "$appversion" && -n "$updateTool" && $DEBUG != 1 ]] && runUpdateTool; then
    finishing
    cleanupAndExit 0 "All done!" REQ
fi
downloadArchive
checkRunningProcesses
failToOrder
case $type in
    dmg|zip|tbz|bz2) installFromImage ;;
    pkg) installFromPackage ;;
    *) cleanupAndExit 99 "Cannot handle type $type" ERROR ;;
esac
finishing
cleanupAndExit 0 "All done!" REQ
