#!/bin/bash
# Runs the example programs, and those with HDF5 if they are built.
#     programs_test.sh PROGRAMS SEEDS        (their folder; the path of the program that makes seeds)
# shellcheck source-path=SCRIPTDIR source=tool/support.sh
programs=$(realpath "$1") seeds=$(realpath "$2")
source "$(dirname "$0")/tool/support.sh"
declare -A pids port
leave() {
    ((${#pids[@]} == 0)) || kill "${pids[@]}" 2>/dev/null
    umount full.60 full.1 2>/dev/null
    rm -rf "$work"
}
trap leave EXIT
await() { # COMMAND...: until it succeeds
    for _ in {1..100}; do "$@" && return; sleep 0.1; done
    fail "waited for: $*"
}
gone() { ! kill -0 "$1" 2>/dev/null; }
begin() { # NAME COMMAND...
    "${@:2}" >"$1".out 2>"$1".err &
    pids[$1]=$!
}
ended() { # NAME: with status 0
    await gone "${pids[$1]}"
    wait "${pids[$1]}" || fail "$1: status $?: $(head -c 3000 "$1".err)"
    unset "pids[$1]"
}
ask() { # SIDE FILE GROUP CHANNEL FIRST COUNT: the values, or the error
    local IFS=$'\t' line=
    exec 5<>"/dev/tcp/127.0.0.1/${port[$1]}" && echo "${*:2}" >&5 && read -r -t 9 line <&5
    if [[ $line == "ok "* ]]; then head -n "${line#ok }" <&5; else echo "$line"; fi
    exec 5>&-
}
answers() { [[ $(ask "${@:2}") == $1 ]]; } # PATTERN REQUEST...
expect() { answers "$@" || fail "${*:2}: not $1: $(ask "${@:2}" | head -c 300)"; }

mkdir served && in_tdms=$programs in_h5=$programs/hdf5
sides=(tdms) && [[ -x $in_h5/acquire ]] && sides+=(h5)
use() { # SIDE
    local -n folder=in_$1
    acquire=$folder/acquire rms=$folder/rms edit=$folder/edit server=$folder/server
}

# All recordings at once: files of a second; until SIGTERM; over a disk (or, if we may not mount one, a limit)
# that is full after two seconds, with memory for all that waits and for one second of it.
for s in "${sides[@]}"; do
    use "$s" && mkdir files.$s stopped.$s
    begin files.$s "$acquire" files.$s 1 3
    begin stopped.$s "$acquire" stopped.$s 60
    begin server.$s "$server" served
done
for memory in 60 1; do
    use tdms && mkdir full.$memory && limit=unlimited
    mount -t tmpfs -o size=700k tmpfs full.$memory 2>/dev/null || limit=700
    begin full.$memory bash -c "trap '' XFSZ; ulimit -Sf $limit; exec $(printf '%q ' "$acquire") full.$memory 60 5 $memory"
done

for s in "${sides[@]}"; do # a recording while it grows, until it is stopped
    use "$s" && await grep -q port server.$s.out && port[$s]=$(grep -o '[0-9]*$' server.$s.out)
    await test -e stopped.$s/*.$s && ln -s ../"$(echo stopped.$s/*)" served/growing.$s
    await answers 25599 $s growing.$s fast encoder 25599 1
    status 0 'Z 0\.72886898685566' "$rms" served/growing.$s fast acceleration
    await answers 51199 $s growing.$s fast encoder 51199 1
    sleep 0.3
    kill "${pids[stopped.$s]}" && ended stopped.$s
    expect 51200 $s growing.$s fast encoder 51200 1 # measured after the last full second
    cp stopped.$s/* outside.$s && status 0 '' "$edit" outside.$s slow new name=1
done
for disk in full.{60,1}; do # room again
    await grep -qE 'No space left|too large' $disk.err
    mount -o remount,size=9m $disk 2>/dev/null || prlimit --pid "${pids[$disk]}" --fsize=unlimited:
done

recorded() { # FOLDER FILES SECONDS: no gap within a file, and each dated by what the encoder had counted
    local file number=0 seconds=0 first start mean origin rows
    for file in "$1"/*; do
        ln -sf ../"$file" served/file && status 0 '' "$rms" "$file" fast acceleration
        read -r start mean <out && rows=$(wc -l <out) first=$(ask $s file fast encoder 0 1)
        ((number++ > 0)) || { origin=$(date -d "$start" +%s%N) && expect 0 $s file fast encoder 0 1; }
        same <(ask $s file fast encoder 0 $((25600 * rows)) | awk '{ printf "%d\n", $1 }') \
            <(seq "$first" $((first + 25600 * rows - 1))) "$file"
        expect 'error:*' $s file fast encoder $((25600 * rows)) 1
        (($(date -d "$start" +%s%N) == origin + first * 78125 / 2)) || fail "$file: starts at $start"
        # The sum of two sines, of amplitudes 1 and 1/4.
        awk -v mean="$mean" 'BEGIN { d = mean - sqrt(0.53125); exit !(d * d < 1e-24) }' || fail "$file: RMS $mean"
        status 0 "^$start " "$rms" "$file" slow temperature
        seconds=$((seconds + rows))
    done
    [[ "$number files, $seconds s" == "$2 files, "$3' s' ]] || fail "$1: $number files, $seconds s"
}
for s in "${sides[@]}"; do
    use "$s" && ended files.$s && recorded files.$s 3 3
    # Editing adds, and keeps what is there.
    cp "$(ls files.$s/* | head -1)" served/0.$s && cp served/0.$s served/edited
    for arguments in 'slow temperature note=hello 1.5 -2' 'events event n=1 a\b' 'new channel n=1 2.25'; do
        status 0 '' "$edit" served/edited $arguments
    done
    status 0 '' "$edit" served/edited fast acceleration 'sampling rate=12800'
    status 1 'edit: ' "$edit" served/none fast encoder n=2
    for range in 'slow temperature 0 5' 'slow time 0 5' 'events event 0 2' 'fast encoder 0 25600'; do
        same <(ask $s edited $range) <(ask $s 0.$s $range) "$s: $range after editing"
    done
    expect $'1.5\n-2' $s edited slow temperature 5 2
    expect 'a\\\\b' $s edited events event 2 1
    expect 'error:*' $s edited fast encoder 25600 1
    grep -q hello served/edited || fail "$s: the new property"
    status 0 '' "$rms" served/edited fast acceleration
    (($(wc -l <out) == 2)) || fail "$s: the new sampling rate: $(cat out)"

    # Clients: bad ones; one that does not read and hangs up, one that says nothing; then eight at once.
    for name in ../outside.$s "$work/outside.$s" .. .hidden '' none; do expect 'error: *' $s "$name" slow new 0 0; done
    for range in '0 x' '-1 1' '25600 1' '0 18446744073709551615' '18446744073709551615 2' 0 '0 1 2'; do
        expect 'error: *' $s 0.$s fast encoder $range
    done
    printf "0.$s\tfast\tencoder\t0\t25600\n%.0s" {1..20} >"/dev/tcp/127.0.0.1/${port[$s]}"
    # shellcheck disable=SC2034 # its descriptor is never used
    exec {silent}<>"/dev/tcp/127.0.0.1/${port[$s]}"
    clients=()
    for c in {0..7}; do
        for ((first = c; first < 25000; first += 2500)); do
            [[ $(ask $s 0.$s fast encoder $first 500) == "$(seq $first $((first + 499)))" ]] || echo $c >>clients
        done &
        clients+=($!)
    done
    wait "${clients[@]}"
    [[ ! -s clients ]] || fail "$s: clients $(tr '\n' ' ' <clients)"
    status 1 'rms: ' "$rms" served/0.$s fast none
done
ended full.60 && s=tdms && use tdms && recorded full.60 1 5
ended full.1 && recorded full.1 2 '[34]'

# The converted file gives the same answers, and so does a copy of it, for all types of values and properties.
if [[ -x $programs/to_hdf5 ]]; then
    make_seeds && cp files/everything served/all.tdms
    for name in all 0; do
        status 0 '' "$programs/to_hdf5" served/$name.tdms served/$name.1
        status 0 '' "$programs/hdf5/repack" served/$name.1 served/$name.2
    done
    for copy in 1 2; do
        for type in {,u}int{8,16,32,64} float double bool string timestamp; do
            same <(ask tdms all.tdms g $type 0 48) <(ask h5 all.$copy g $type 0 48) "$copy: $type"
        done
        same <(ask tdms 0.tdms fast encoder 0 25600) <(ask h5 0.$copy fast encoder 0 25600) "$copy: encoder"
        same <("$in_tdms/rms" served/0.tdms fast encoder) <("$in_h5/rms" served/0.$copy fast encoder) "$copy: rms"
        ! command -v h5dump >/dev/null || for attribute in /int64:-9223372036854775808 /new:'"later"' \
            /g/bool:FALSE /g/timestamp:86401000000000 /g/float/float:1.4013e-45 /g/uint8/uint8:128; do
            status 0 "\(0\): ${attribute#*:}$" h5dump -a "${attribute%%:*}" served/all.$copy
        done
    done
fi
for s in "${sides[@]}"; do kill "${pids[server.$s]}"; ended server.$s; done # a client is still there
finish
