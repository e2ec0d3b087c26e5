#!/bin/bash
# Runs the example programs, and those with HDF5 if they are built.
#     programs_test.sh PROGRAMS SEEDS        (their folder; the path of the program that makes seeds)
set -u
export LC_ALL=C TZ=UTC
programs=$(realpath "$1") seeds=$(realpath "$2")
work=$(mktemp -d) && cd "$work" || exit 1
leave() {
    kill "${daemons[@]}" 2>/dev/null
    umount full.* 2>/dev/null
    rm -rf "$work"
}
daemons=() && trap leave EXIT
failures=0
fail() { echo "FAILED: $1" && failures=$((failures + 1)); }
sides=(tdms) && ls "$programs"/hdf5/acquire >/dev/null 2>&1 && sides+=(h5)
at() { [[ $1 == tdms ]] && echo "$programs/$2" || echo "$programs/hdf5/$2"; } # SIDE PROGRAM
# status STATUS PATTERN COMMAND...: the exit status, and a pattern (of grep -E) of a line that it prints
status() {
    local wanted=$1 pattern=$2 && shift 2
    "$@" >out 2>err
    local got=$?
    [[ $got == "$wanted" ]] || fail "$*: status $got, not $wanted: $(head -c 300 err)"
    grep -qE -- "$pattern" out err || fail "$*: no '$pattern' in: $(head -c 300 out err)"
}
same() { diff "$1" "$2" >differences || fail "$3: $(head -5 differences)"; }
ended() { # STATUS PID WHAT
    wait "$2"
    local got=$?
    [[ $got == "$1" ]] || fail "$3: status $got: $(cat "$3".err)"
    ! grep -q Sanitizer "$3".err || fail "$3: $(head -c 3000 "$3".err)"
}

# A disk that is full after two seconds: a small one if we may mount it, else a limit of the size of files.
make_full_disk() { # FOLDER
    mkdir "$1" && mount -t tmpfs -o size=700k tmpfs "$1" 2>/dev/null
}
make_room() { # FOLDER PID
    mount -o remount,size=9m "$1" 2>/dev/null || prlimit --pid "$2" --fsize=unlimited:
}

# All recordings at once: three files in three seconds; until SIGTERM; over a full disk, with memory for all
# that waits and for two seconds of it.
start() { # SIDE NAME ARGUMENTS...
    "$(at "$1" acquire)" "$2" "${@:3}" 2>"$2".err &
    daemons+=($!) && pid[$2]=$!
}
declare -A pid
for side in "${sides[@]}"; do
    mkdir files.$side stopped.$side
    start $side files.$side 1 3
    start $side stopped.$side 60
    for memory in 60 1; do
        disk=full.$side.$memory
        if make_full_disk $disk; then
            start $side $disk 60 5 $memory
        else
            trap '' XFSZ && ulimit -Sf 700
            start $side $disk 60 5 $memory
            ulimit -Sf unlimited
        fi
    done
done

# Meanwhile, servers: one per side, over links to the recordings.
mkdir served
declare -A port
for side in "${sides[@]}"; do
    "$(at $side server)" served >port.$side 2>server.$side.err &
    daemons+=($!) && pid[server.$side]=$!
done
ask() { # SIDE FILE GROUP CHANNEL FIRST COUNT: the answer, without its line "ok COUNT"
    local IFS=$'\t' line count
    exec 5<>"/dev/tcp/127.0.0.1/${port[$1]}" && echo "${*:2}" >&5 && IFS= read -r -t 9 line <&5
    if [[ $line == "ok "* ]]; then head -n "${line#ok }" <&5; else echo "$line"; fi
    exec 5>&-
}
sleep 1.5
for side in "${sides[@]}"; do
    port[$side]=$(grep -o '[0-9]*$' port.$side)
    ln -s ../stopped.$side/*.$side served/stopped.$side
    status 0 'Z 0\.72886898685566' "$(at $side rms)" served/stopped.$side fast acceleration
    [[ $(ask $side stopped.$side fast encoder 25599 1) == 25599 ]] || fail "$side: a growing file"
    [[ $(ask $side stopped.$side fast encoder 25600 1) == error:* ]] || fail "$side: before its values"
done
sleep 1
for side in "${sides[@]}"; do
    [[ $(ask $side stopped.$side fast encoder 51199 1) == 51199 ]] || fail "$side: a file that grew"
    kill ${pid[stopped.$side]}
    ended 0 ${pid[stopped.$side]} stopped.$side
    # The values since the last save are there, too.
    [[ $(ask $side stopped.$side fast encoder 53759 1) == 53759 ]] || fail "$side: saved at the end"
    cp stopped.$side/* edited.$side && status 0 '' "$(at $side edit)" edited.$side slow new n=1
done
sleep 1.2
for side in "${sides[@]}"; do
    for memory in 60 1; do make_room full.$side.$memory ${pid[full.$side.$memory]}; done
done
for side in "${sides[@]}"; do
    ended 0 ${pid[files.$side]} files.$side
    before=
    number=0
    for file in files.$side/*; do
        ln -s ../"$file" served/$number.$side
        ask $side $number.$side fast encoder 0 25600 >values
        same values <(seq $((25600 * number)) $((25600 * ++number - 1))) "$file: the values go on"
        [[ $(ask $side $((number - 1)).$side fast encoder 25600 1) == error:* ]] || fail "$file: length"
        status 0 'Z 0\.72886898685566' "$(at $side rms)" "$file" fast acceleration
        read -r start rms <out
        [[ $(wc -l <out) == 1 ]] || fail "$file: $(cat out)"
        awk -v rms="$rms" 'BEGIN { d = rms - sqrt(0.53125); exit !(d * d < 1e-18) }' || fail "RMS $rms"
        now=$(date -d "$start" +%s%N)
        ((${before:-now - 1000000000} + 1000000000 == now)) || fail "$file: starts at $start"
        before=$now
        status 0 "^$start " "$(at $side rms)" "$file" slow temperature
    done
    ((number == 3)) || fail "$side: $number files"

    for memory in 60 1; do
        disk=full.$side.$memory && ended 0 ${pid[$disk]} $disk
        grep -qE 'No space left|too large' $disk.err && grep -q 'that waited are saved' $disk.err ||
            fail "$disk: $(cat $disk.err)"
    done
    ((
