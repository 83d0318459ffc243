# Versions, downloads, and the replacing of what is installed. All paths are below the sample's own root.

plistValue() {
    "$sampleTool" plist "$1" "$2" 2>/dev/null
}

# The team identifier of a signed bundle: the ten-character word of its code directory.
teamOf() {
    local signature="$1/Contents/_CodeSignature/CodeDirectory"
    [[ -f "$signature" ]] || signature="$1/Contents/MacOS/${1:t:r}"
    [[ -f "$signature" ]] || return 1
    LC_ALL=C tr -c 'A-Z0-9' '\n' < "$signature" | grep -xE '[A-Z0-9]{10}' | head -1
}

# True when version $1 is below version $2, number by number.
isBelow() {
    [[ "$1" != "$2" && "$(print -rl -- "$1" "$2" | sort -V | head -1)" == "$1" ]]
}

# Leaves the installed version in appversion and the bundle, if any, in installedAppPath.
getAppVersion() {
    appversion="" installedAppPath=""
    if (( $+functions[appCustomVersion] )); then
        appversion="$(appCustomVersion)"
        printlog "Custom App Version detection is used, found $appversion"
        return
    fi
    if [[ -n "$packageID" ]]; then
        appversion="$(plistValue "$sampleRoot/var/db/receipts/$packageID.plist" PackageVersion)"
        if [[ -n "$appversion" ]]; then
            printlog "found packageID $packageID installed, version $appversion"
            return
        fi
        printlog "No version found using packageID $packageID"
    fi
    findInstalledApp || return
    appversion="$(plistValue "$installedAppPath/Contents/Info.plist" $versionKey)"
    printlog "found app at $installedAppPath, version $appversion, on versionKey $versionKey"
    [[ -f "$installedAppPath/Contents/_MASReceipt/receipt" ]] || return
    if [[ $IGNORE_APP_STORE_APPS == yes ]]; then
        printlog "Replacing App Store apps, no matter the version" WARN
        appversion=0
    else
        cleanupAndExit 23 "App previously installed from App Store, and we respect that" ERROR
    fi
}

findInstalledApp() {
    local candidate
    for candidate in "${targetDir%/}/$appName" "/Applications/$appName" "/Applications/Utilities/$appName"; do
        if [[ -d "$sampleRoot$candidate" ]]; then
            installedAppPath="$sampleRoot$candidate"
            return 0
        fi
    done
    local -a found
    found=($sampleRoot/Applications/**/"$name.app"(N/) $sampleRoot/Users/*/Applications/**/"$name.app"(N/))
    if (( ! $#found )); then
        printlog "No previous app found" WARN
        return 1
    fi
    found=(${(M)found:#${sampleRoot}${targetDir%/}/*})
    if (( $#found != 1 )); then
        printlog "could not determine location of $appName" WARN
        return 1
    fi
    installedAppPath=$found[1]
}

downloadArchive() {
    printlog "Downloading $downloadURL to $archiveName" REQ
    obeyControls
    if [[ $DEBUG == 1 && -f "$tmpDir/$archiveName" ]]; then
        printlog "$archiveName exists and DEBUG mode 1 enabled, skipping download"
    elif ! curl -fsSL --max-time 300 $curlOptions -o "$tmpDir/$archiveName" "$downloadURL"; then
        cleanupAndExit 2 "error downloading $downloadURL" ERROR
    fi
    local archive="$tmpDir/$archiveName"
    if ! tar -tf "$archive" >/dev/null 2>&1; then
        cleanupAndExit 2 "downloaded file is ASCII text, not an archive" ERROR
    fi
    local -a size
    zstat -A size +size "$archive"
    printlog "Downloaded $archiveName – Type is tar archive – SHA is ${"$(sha1sum "$archive")"%% *} – Size is $(( size[1] / 1024 )) kB"
}

# Waits and noise to order; failures come later, when something is to be installed.
obeyControls() {
    [[ -f "$sampleControl/delay/$label" ]] && sleep "$(<$sampleControl/delay/$label)"
    [[ -f "$sampleControl/garbage/$label" ]] && head -c 65536 /dev/urandom
}

failToOrder() {
    local order="$sampleControl/fail/$label"
    [[ -f "$order" && $DEBUG == 0 ]] || return
    local code=${$(<$order)//[^0-9]/}
    if (( code == 0 )); then
        printlog "Installed $name, version $appNewVersion" REQ
        cleanupAndExit 0 "All done!" REQ
    fi
    (( code > 128 && code < 160 )) && kill -$(( code - 128 )) $$
    cleanupAndExit $code "$name could not be installed" ERROR
}

unpack() {
    mkdir -p "$tmpDir/unpacked"
    if ! tar -xf "$tmpDir/$archiveName" -C "$tmpDir/unpacked" 2>/dev/null; then
        cleanupAndExit 3 "Error mounting $archiveName" ERROR
    fi
}

# verifyTeam WHAT FOUND
verifyTeam() {
    [[ -n "$2" ]] || cleanupAndExit 4 "Error verifying $archiveName" ERROR
    if [[ "$2" != "$expectedTeamID" ]]; then
        printlog "$1: $2 (expected: $expectedTeamID )"
        cleanupAndExit 5 "Team IDs do not match" ERROR
    fi
    printlog "$1: $2 (expected: $expectedTeamID )"
}

compareDownloaded() {
    local what=$1 found=$2
    if [[ -n "$appversion" && "$found" == "$appversion" ]]; then
        printlog "$what, same as installed."
        [[ $INSTALL == force ]] || cleanupAndExit 0 "Same version as installed" DEBUG
    elif [[ -n "$appversion" ]]; then
        printlog "$what (replacing version $appversion)."
    else
        printlog "$what"
    fi
}

installFromImage() {
    printlog "Installing $name" REQ
    unpack
    local bundle="$tmpDir/unpacked/$appName"
    [[ -d "$bundle" ]] || cleanupAndExit 8 "could not find: $appName" ERROR
    verifyTeam "Team ID matching" "$(teamOf "$bundle")"
    local found="$(plistValue "$bundle/Contents/Info.plist" $versionKey)"
    compareDownloaded "Downloaded version of $name is $found on versionKey $versionKey" "$found"
    [[ -n "$appversion" ]] || printlog "Installing $name version $found on versionKey $versionKey."
    local minimum="$(plistValue "$bundle/Contents/Info.plist" LSMinimumSystemVersion)"
    if [[ -n "$minimum" ]] && isBelow "$systemVersion" "$minimum"; then
        cleanupAndExit 15 "Installed macOS is too old for this app" ERROR
    fi
    stopBeforeChanges || return
    replaceBundle "$bundle" "$sampleRoot${targetDir%/}/$appName"
}

# A package is laid out from the system root, with its identifier, version and team in PackageInfo.
installFromPackage() {
    printlog "Installing $name" REQ
    unpack
    local -a info files
    [[ -f "$tmpDir/unpacked/PackageInfo" ]] || cleanupAndExit 20 "no package in $archiveName" ERROR
    info=($(<"$tmpDir/unpacked/PackageInfo"))
    verifyTeam "Team ID" "$info[3]"
    printlog "Downloaded package $packageID version $info[2]"
    [[ -n "$packageID" ]] && compareDownloaded "Downloaded package $packageID version $info[2]" "$info[2]"
    stopBeforeChanges || return
    local bundle file
    for bundle in "$tmpDir/unpacked"/Applications/*.app(N/); do
        replaceBundle "$bundle" "$sampleRoot/Applications/${bundle:t}"
    done
    for file in "$tmpDir/unpacked"/**/*(N.); do
        [[ "${file:t}" == PackageInfo ]] || replaceFile "$file" "$sampleRoot/${file#$tmpDir/unpacked/}"
    done
    [[ -n "$packageID" ]] || return 0
    "$sampleTool" receipt "$sampleRoot/var/db/receipts/$packageID.plist" "$packageID" "$info[2]" / ||
        cleanupAndExit 9 "could not write the receipt of $packageID" ERROR
}

# DEBUG=1 claims success without a change, DEBUG=2 ends here.
stopBeforeChanges() {
    if [[ $DEBUG == 1 ]]; then
        printlog "DEBUG mode 1 enabled, skipping remove, copy and chown steps" DEBUG
        return 1
    fi
    [[ $DEBUG == 2 ]] && cleanupAndExit 0 ""
    return 0
}

# The new bundle lies on the same volume, so that both steps are renames; the old one comes back if the second fails.
replaceBundle() {
    local old="$tmpDir/old-${2:t}"
    mkdir -p "${2:h}" || cleanupAndExit 7 "could not create ${2:h}" ERROR
    if [[ -e "$2" ]]; then
        printlog "Removing existing $2" WARN
        mv "$2" "$old" || cleanupAndExit 7 "could not remove $2" ERROR
    fi
    if ! mv "$1" "$2"; then
        [[ -e "$old" ]] && mv "$old" "$2"
        cleanupAndExit 7 "Error while copying" ERROR
    fi
    printlog "Copied ${2:t} to ${2:h}"
}

replaceFile() {
    mkdir -p "${2:h}" && mv -f "$1" "$2" || cleanupAndExit 9 "Error installing ${2:t}" ERROR
}

runUpdateTool() {
    printlog "App needs to be updated and uses $updateTool. Ignoring BLOCKING_PROCESS_ACTION and running updateTool now."
    if [[ ! -x "$sampleRoot$updateTool" ]]; then
        printlog "couldn't find $updateTool, continuing normally" WARN
        return 1
    fi
    if ! "$sampleRoot$updateTool" $updateToolArguments; then
        printlog "Error running $updateTool, continuing normally" WARN
        return 1
    fi
    printlog "updateTool has run" REQ
}

finishing() {
    printlog "Finishing..."
    [[ $DEBUG == 0 ]] && getAppVersion
    if [[ -n "$appversion" ]]; then
        printlog "Installed $name, version $appversion" REQ
    else
        printlog "Installed $name" REQ
    fi
}
