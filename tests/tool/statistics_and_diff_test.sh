#!/bin/bash
# Runs the tool's info --stats and diff on files with known values.
# shellcheck source-path=SCRIPTDIR source=support.sh
source "$(dirname "$0")/support.sh"

# channel FILE TYPE COUNT PATH: appends a segment with a channel; its values are read from standard input.
channel() {
    local metadata=$((32 + ${#4}))
    cat >raw
    {
        lead_in $metadata "$(stat -c %s raw)"
        le 4 1 && counted "$4" && le 4 20 "$2" 1 && le 8 "$3" && le 4 0 && cat raw
    } >>"$1"
}
doubles() { le 8 "${@:3}" | channel "$1" 10 $(($# - 2)) "$2"; } # FILE PATH BITS...
int64s() { le 8 "${@:3}" | channel "$1" 4 $(($# - 2)) "$2"; }
bytes() { head -c "$1" /dev/zero | tr '\0' "$2"; }
halves() { # FILE PATH HALVES...: times, in half seconds since 1970
    local file=$1 path=$2 half && shift 2
    for half; do le 8 $((half % 2 << 63)) $((2082844800 + half / 2)); done | channel "$file" 0x44 $# "$path"
}
one=$((0x3FF << 52)) two=$((1 << 62)) three=$((0x4008 << 48)) minus_zero=$((1 << 63))
not_a_number=$((0x7FF8 << 48)) other_nan=$((0xFFF8 << 48 | 1)) infinity=$((0x7FF << 52))
huge=$((0x7FDF << 48)) billion=$((0x41CDCD6500000000)) half=$((1 << 22)) # of a unit, to be added to the billion

doubles values "/'g'/'nan'" $one $not_a_number $two $three $not_a_number
doubles values "/'g'/'infinite'" $one $infinity
doubles values "/'g'/'huge'" $huge $huge $((huge | 1 << 63)) $((huge | 1 << 63))
doubles values "/'g'/'offset'" $((billion + half)) $((billion + 2 * half)) $((billion + 3 * half))
int64s values "/'g'/'exact'" $((1 << 63)) $(((1 << 53) + 1))
{ bytes 50000 '\1' && bytes 50000 '\3'; } | channel values 1 100000 "/'g'/'steps'"
printf '\1\0\1\1' | channel values 0x21 4 "/'g'/'bool'"
printf '\1\2' | channel values 25 2 "/'g'/'unknown'"
status 1 'values: "g/unknown": .* cannot be read' "$tdms" info --stats values
sed -n '/minimum/,$p' out | tr -s ' ' >table
same - table 'info --stats printed other statistics' <<'END'
 channel minimum maximum mean std dev NaN lost
 bool false true 0.75 0.5 0 0
 exact -9223372036854775808 9007199254740993 -4.60718e+18 6.52828e+18 0 0
 huge -8.70757612e+307 8.70757612e+307 0 1.00546e+308 0 0
 infinite 1 inf inf nan 0 0
 nan 1 3 2 1 2 0
 offset 1000000000.5 1000000001.5 1000000001 0.5 0 0
 steps 1 3 2 1.00001 0 0
 unknown cannot be read
END

# Each group has its own times; not all of them are those of samples.
halves times "/'fast'/'time'" 20 21 22 && doubles times "/'fast'/'v'" $one $two $three
halves times "/'slow'/'time'" 0 240 && halves times "/'back'/'time'" 4 2 6
halves times "/'short'/'time'" 7200 && doubles times "/'short'/'v'" $one $two
each_status <<'END'
0|^times: 4 groups, 6 channels, [0-9]+ bytes$|info --stats times
0|^  1970-01-01T00:00:00.000000Z to 1970-01-01T00:02:00.000000Z, 2 min 0 s$|info --stats times
0|^  fast: 2 channels, 1 s at 2 Hz$|info --stats times
0|^  back: 1 channel, 2 s, but the times do not ascend$|info --stats times
0|^  short: 2 channels$|info --stats times
0|"standard_deviation": 1,|info --stats --json times
2|excludes|info --stats --names times
END

doubles a "/'g'/'v'" $one $two && doubles a "/'g'/'v'" $not_a_number 0
doubles same "/'g'/'v'" $one $two $other_nan $minus_zero
doubles changed "/'g'/'v'" $one $three $other_nan $infinity
doubles longer "/'g'/'v'" $one $two $not_a_number 0 0
doubles other "/'h'/'v'" $one
int64s exact "/'g'/'v'" $((1 << 53)) 5 && int64s inexact "/'g'/'v'" $(((1 << 53) + 1)) 5
doubles as_doubles "/'g'/'v'" $((0x434 << 52)) $((0x4014 << 48))
each_status <<'END'
0||diff a same
0||diff - same <a
1|"g/v": 2 of 4 values differ, first at 1: 2 and 3; largest difference 1$|diff a changed
1|"g/v": 1 of 4 values differs by more than the tolerance, first at 3: 0 and inf$|diff --tolerance 1 a changed
1|: 2 of 4 values differ by .* first at 1|diff --relative 0.33 a changed
1|channel "g/v": 4 and 5 values|diff a longer
1|group "g": only in a|diff a other
1|group "h": only in other|diff a other
1|first at 0: 9007199254740992 and 9007199254740993; largest difference 1$|diff exact inexact
0||diff --tolerance 1 exact inexact
1|"g/v": type double and int64|diff as_doubles exact
1|first at 0: 9007199254740992 and 9007199254740993|diff as_doubles inexact
1|changed.tdms: cannot be opened|diff a changed.tdms
1|"g/unknown": 2 values .* cannot be read|diff values values
2|only one|diff - -
END
status 1 '' "$tdms" diff --quiet a changed
[[ ! -s out && ! -s err ]] || fail "diff --quiet printed: $(cat out err)"
status 1 'type double and int64' "$tdms" diff as_doubles exact
! grep -q ' differ' out || fail 'diff reported equal values of two types'

# Properties and strings of recordings, and the intact segments of a truncated one.
record_machine one.tdms 1 200
record_machine two.tdms 1 200
status 0 '' "$tdms" diff one.tdms one.tdms
status 1 '^file: property "start": 20.* and 20' "$tdms" diff one.tdms two.tdms
head -c -1 one.tdms >truncated.tdms
status 1 'truncated.tdms: the last' "$tdms" diff one.tdms truncated.tdms
status 1 'truncated.tdms: the last' "$tdms" info --stats --strict truncated.tdms
finish
