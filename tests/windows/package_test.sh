#!/usr/bin/env bash
# The zip as a user finds it: unpacked into a folder with a space and letters of other languages, run with nothing but
# what Windows brings. usage: package_test.sh TOOL-CHAIN ZIP
set -euo pipefail
root=$1 zip=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
home="$folder/Für alle 人"
mkdir "$home"
unzip -q "$zip" -d "$home"
cd "$home"/voicedesk-*/

# The tool chain's own libraries must not help.
run() {
    env -u WINEPATH WINEPREFIX="$root/prefix" WINEDEBUG=-all LC_ALL=C.UTF-8 \
        WINEDLLOVERRIDES="mscoree=;mshtml=;winedbg.exe=d" /usr/lib/wine/wine64 "$@" | tr -d '\r'
}
fail() {
    echo "package_test: $1" >&2
    exit 1
}

for name in voicedesk.exe voicedesk-decode.exe VoiceDesk.dll FrameSmith.dll SoundTap.dll TrelLogUtl.dll README.txt \
    LICENSE.txt THIRD-PARTY.txt announcement.wav; do
    [[ -s $name ]] || fail "$name is missing"
done
# Every library of others has its line.
for library in *.dll; do
    case $library in
    VoiceDesk.dll | FrameSmith.dll | SoundTap.dll | TrelLogUtl.dll | Qt5*.dll) ;;
    *) grep -qF "${library%-[0-9]*.dll}" THIRD-PARTY.txt || grep -qF "$library" THIRD-PARTY.txt ||
        fail "THIRD-PARTY.txt does not tell of $library" ;;
    esac
done
run voicedesk.exe --version | grep -q '^voicedesk [0-9]' || fail "voicedesk.exe does not start"
run voicedesk-decode.exe --help | grep -q pcmu || fail "voicedesk-decode.exe does not start"
run voicedesk.exe talk --source announcement.wav --output Aufnahmen >talk.txt || fail "the talk fails"
grep -q '^packets sent *1' talk.txt || fail "nothing was sent: $(cat talk.txt)"
[[ $(stat -c %s Aufnahmen/camera-1-1.wav) -gt 100000 ]] || fail "the camera heard too little"
run voicedesk.exe devices add "Höfe 門" 10.0.0.5 554 --data Daten >/dev/null || fail "no device can be added"
run voicedesk.exe files add announcement.wav --data Daten >/dev/null || fail "no file can be added"
run voicedesk.exe files list --data Daten | grep -q 'announcement.wav  *7\.4' || fail "the file has no duration"
echo "package_test: done"
