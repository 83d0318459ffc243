# Applications that are open while they are to be replaced. Only processes whose executable lies below the
# sample's own root are ever found, so nothing outside of it is asked to quit or killed.

zmodload -F zsh/stat b:zstat
typeset -ga closedExecutables
quitWait=${quitWait:-5}  # seconds that an application has to quit

# Leaves the process ids of NAME in reply, their executables in replyExecutables.
findProcesses() {
    local link executable
    local -a target
    reply=() replyExecutables=()
    for link in /proc/<1->/exe(N@); do
        target=()
        zstat -A target +link $link 2>/dev/null || continue
        executable=${target[1]% \(deleted\)}
        [[ "${executable:t}" == "$1" && "$executable" == "$sampleRoot"/* ]] || continue
        reply+=(${link:h:t})
        replyExecutables+=("$executable")
    done
}

waitUntilGone() {
    local deadline=$(( EPOCHREALTIME + $2 ))
    while (( EPOCHREALTIME < deadline )); do
        findProcesses "$1"
        (( $#reply )) || return 0
        sleep 0.1
    done
    return 1
}

quitProcess() {
    printlog "telling app $1 to quit"
    closedExecutables+=($replyExecutables)
    kill -TERM $reply 2>/dev/null
    waitUntilGone "$1" $quitWait
}

killProcess() {
    printlog "killing process $1"
    closedExecutables+=($replyExecutables)
    kill -KILL $reply 2>/dev/null
    waitUntilGone "$1" 5
}

# askUser SECONDS TITLE BUTTON...: puts up the prompt, whose answer is left in dialogAnswer. The file
# answer/<label> answers it after a second: quit, later or timeout.
askUser() {
    local given="$sampleControl/answer/$label" answerFile="$tmpDir/answer"
    "$sampleRoot/usr/bin/osascript" "$@" >"$answerFile" </dev/null &
    promptProcess=$!
    if [[ -f "$given" ]]; then
        sleep 1
        case "$(<$given)" in
            quit) kill -USR1 $promptProcess ;;
            later) kill -TERM $promptProcess ;;
            timeout) kill -KILL $promptProcess ;;
        esac 2>/dev/null
    fi
    wait $promptProcess 2>/dev/null
    promptProcess=""
    dialogAnswer="$(<$answerFile)"
}

# tellUser PROCESS: one button, no time limit.
tellUser() {
    askUser 0 "Quit “$1” to continue updating?" "Quit and Update"
}

# promptUser PROCESS ROUND: ends the run unless the user agrees.
promptUser() {
    askUser $PROMPT_TIMEOUT "Quit “$1” to continue updating?" "Not Now" "Quit and Update"
    if [[ "$dialogAnswer" == "Not Now" ]]; then
        if [[ $BLOCKING_PROCESS_ACTION == prompt_user_loop ]]; then
            if (( $2 == 1 )); then
                sleep ${loopWait:-3600}
            else
                BLOCKING_PROCESS_ACTION=tell_user
            fi
            return 1
        fi
        cleanupAndExit 10 "user aborted update" ERROR
    elif [[ -z "$dialogAnswer" && $BLOCKING_PROCESS_ACTION != prompt_user_loop ]]; then
        cleanupAndExit 25 "timed out waiting for user response" ERROR
    fi
}

# treatProcess PROCESS ROUND: one step with one process that was found.
treatProcess() {
    case $BLOCKING_PROCESS_ACTION in
        quit) quitProcess "$1" ;;
        quit_kill)
            if (( $2 < 4 )); then quitProcess "$1"; else killProcess "$1"; fi ;;
        kill) killProcess "$1" ;;
        prompt_user|prompt_user_loop)
            promptUser "$1" $2 && quitProcess "$1" ;;
        prompt_user_then_kill)
            if (( $2 == 1 )); then promptUser "$1" $2 && quitProcess "$1"; else killProcess "$1"; fi ;;
        tell_user) tellUser "$1"; quitProcess "$1" ;;
        tell_user_then_kill)
            if (( $2 <= 2 )); then tellUser "$1"; quitProcess "$1"; else killProcess "$1"; fi ;;
        silent_fail) cleanupAndExit 12 "blocking process '$1' found, aborting" ERROR ;;
    esac
}

# Four rounds over all names; what is still found in the fourth ends the run, even if that round got rid of it.
checkRunningProcesses() {
    if [[ $DEBUG == 1 || $BLOCKING_PROCESS_ACTION == ignore || "${blockingProcesses[1]}" == NONE ]]; then
        printlog "not checking for blocking processes"
        return
    fi
    local round process found
    for round in 1 2 3 4; do
        found=0
        for process in $blockingProcesses; do
            findProcesses "$process"
            (( $#reply )) || continue
            (( found++ ))
            printlog "found blocking process $process"
            treatProcess "$process" $round
        done
        (( found )) || break
    done
    (( found )) && cleanupAndExit 11 "could not quit all processes, aborting..." ERROR
    printlog "no more blocking processes, continue with update" REQ
}

reopenClosedProcesses() {
    [[ $REOPEN == yes && $DEBUG != 1 ]] || return
    local executable
    for executable in ${(u)closedExecutables}; do
        findProcesses "${executable:t}"
        (( $#reply )) && continue
        [[ -x "$executable" ]] || continue
        printlog "Telling app ${executable:t} to open"
        setsid -f "$executable" </dev/null >/dev/null 2>&1
    done
}
