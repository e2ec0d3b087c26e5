#!/bin/bash
# Runs the tool's info and dump on intact, truncated and unusual files.
# shellcheck disable=SC2016 source-path=SCRIPTDIR source=support.sh  # inner shells expand these
source "$(dirname "$0")/support.sh"
make_seeds
cp files/odd/* .
cat >wanted.csv <<'END'
"g""/a,b","g""/s/1","g""/s/2"
0.1,"x,y",A
5e-324,"","B
C"
1.7976931348623157e+308,"say ""hi""",D'
-0, ,
1.0000000000000002,,
-inf,,
9007199254740994,,
END
status 0 'g' "$tdms" dump values
same out wanted.csv 'dump changed doubles or strings'
status 0 'g' "$tdms" dump --crlf --from 4 --count 2 values 'g"/s/2' 'g"/a,b'
same out <(printf '"g""/s/2","g""/a,b"\r\n,1.0000000000000002\r\n,-inf\r\n') 'dump chose other rows or columns'
for file in groups foreign; do
    status 0 '' "$tdms" dump $file p/c q
    same out <(printf 'p/c,q/c\n7,8\n') "dump mixed the groups of $file"
done
# The values of a channel that was saved twice after it was set once are lost; other columns stay.
status 0 ' c  *int32  *2  2 lost$' "$tdms" info lost
status 1 'lost: "g/c": 2 values lost' "$tdms" dump lost
same out <(printf 'g/a,g/c,g/s\n1,2,say\000\n4,3,\n5,,\n') 'dump did not leave the fields of lost values empty, or lost a zero byte'

# The last time of 64 bits, and times around the hour that a clock repeats in autumn.
timestamp() { # SECONDS NANOSECONDS
    le 8 $(($2 * 18446744073 + ($2 * 709551616 + 500000000) / 1000000000)) $(($1 + 2082844800))
}
cat >times.txt <<'END'
-1 999999999 1969-12-31T23:59:59.999999999Z 1970-01-01T00:59:59.999999999+01:00
9223372036 854775807 2262-04-11T23:47:16.854775807Z 2262-04-12T01:47:16.854775807+02:00
2224800000 0 2040-07-02T00:00:00.000000Z 2040-07-02T02:00:00.000000+02:00
1729989000 1000 2024-10-27T00:30:00.000001Z 2024-10-27T02:30:00.000001+02:00
1729992600 100000000 2024-10-27T01:30:00.100000Z 2024-10-27T02:30:00.100000+01:00
END
{
    lead_in 69 $((5 * 16)) && le 4 1 && counted "/'g'/'t'" && le 4 20 0x44 1 && le 8 5
    le 4 1 && counted start && le 4 0x44 && timestamp -1 0
    while read -r seconds nanoseconds _; do timestamp "$seconds" "$nanoseconds"; done <times.txt
} >times.tdms
column=3 local=
for zone in EST5 CET-1CEST,M3.5.0,M10.5.0/3; do
    status 0 '' env TZ=$zone "$tdms" dump times.tdms $local
    same out <(echo g/t && cut -d ' ' -f $column times.txt) "dump shows wrong times in $zone"
    column=4 local=--local
done
status 0 'start = 1969-12-31T20:29:59.000000-03:30' env TZ=XXX3:30 "$tdms" info --local times.tdms
status 0 '"value": "1969-12-31T23:59:59.000000Z"' "$tdms" info --json times.tdms

# A recording, complete, and truncated at several places of its second segment.
record_machine record.tdms 2 2000
status 1 'Another program is writing' flock record.tdms "$record" record.tdms
# The limit must not hit the profile that a build for coverage writes at its end.
status 1 'small.tdms: .*File too large' env LLVM_PROFILE_FILE=/dev/null bash -c \
    'ulimit -f 2; "$0" small.tdms 1 500' "$record"
status 0 '^ +cpu idle +double +4000 .*unit = "%"' "$tdms" info record.tdms
"$tdms" dump record.tdms system/load --count 1 | tail -1 >first
"$summary" record.tdms | grep -q "first $(cat first)," || fail 'summary prints another first value than dump'

# Rows by their times, in UTC and local, and the options of the format.
"$tdms" dump record.tdms --time-first system/load >rows
row() { sed -n "$(($1 + 2))p" rows | cut -d , -f 1; } # NUMBER: its time
status 0 '' "$tdms" dump record.tdms --time-first system/load \
    --since "$(date -u -d "$(row 1000)" +%FT%T.%N-00:00)" --until "$(row 1005)"
same out <(sed -n '1p;1002,1006p' rows) 'dump --since --until chose other rows'
status 0 '' env TZ=CET-1 "$tdms" dump record.tdms system/load --local \
    --since "$(TZ=CET-1 date -d "$(row 3997)" '+%F %T,%N')" --count 2
same out <(sed -n '1p;3999,4000p' rows | cut -d , -f 2) 'dump --local --since chose other rows'
status 0 '' "$tdms" dump values 'g"' --units --decimal-comma --count 1 -o rows.csv
same rows.csv <(printf '"g""/a,b";"g""/s/1";"g""/s/2"\n;;\n0,1;x,y;A\n') 'dump --decimal-comma --units wrote another format'
status 0 '^system/time.system/load$' "$tdms" dump record.tdms --separator '\t' --time-first system/load

# A file that is being recorded: every row appears once, and dump ends when nobody reads its output.
"$record" growing.tdms 1.5 100 &
until [[ -e growing.tdms ]]; do sleep 0.01; done
timeout 20 "$tdms" dump growing.tdms system/load system/events --follow --count 150 >followed || fail 'dump --follow --count did not end'
timeout 20 "$tdms" dump growing.tdms system/load --follow | head -2 >out || fail 'dump --follow did not end when nobody read its output'
wait
for column in 1 2; do
    "$tdms" dump growing.tdms "$(head -1 followed | cut -d , -f $column)" | sed '/^$/d' >wanted
    same <(cut -d , -f $column followed | sed '/^$/d') wanted "dump --follow wrote other values in column $column"
done

status 0 '2 intact segments' "$tdms" check record.tdms
read -r _ offset metadata raw _ < <(grep -E '^ +2 ' out)
for more in 1 28 $((28 + metadata)) $((27 + metadata + raw)); do
    head -c $((offset + more)) record.tdms >truncated.tdms
    status 0 "last ([0-9,]+ bytes are|1 byte is) not a complete segment: being recorded, or truncated" \
        "$tdms" dump truncated.tdms
    status 1 'cpu idle' "$tdms" info --strict truncated.tdms
done

# Times of a clock that was set back.
for second in 1 2 3 0 4; do echo "2024-02-01T00:00:0${second}Z"; done | sed '1i g/time' | "$tdms" convert - -o back.tdms >out

# Only complete files are written, and never in place of the input.
ln -s record.tdms record.svg && mkdir empty
each_status <<'END'
1|out.tdms: cannot be opened: No such file|info out.tdms
1|wanted.csv: not a TDMS file|info wanted.csv
1|record.tdms: 1 group|info missing.tdms record.tdms
1|/dev/null: is not a regular file|info /dev/null
1|: is a directory|info .
2|no channel or group "System/cpu.idle"; did you mean "system/cpu idle"|dump record.tdms System/cpu.idle
2|no channel or group "load"; did you mean "system/load"|dump record.tdms load
2|^tdms: --from: not a number of rows: "x"$|dump record.tdms --from x
2|--from excludes --since|dump record.tdms --from 1 --since 2024-02-01
2|--until excludes --follow|dump record.tdms --until 2024-02-01 --follow
2|not a time: "2024-02-01T24:30Z"|dump record.tdms --until 2024-02-01T24:30Z
1|"g/time": the times do not ascend|dump back.tdms --since 2024-02-01
2|must not be a comma|dump record.tdms --decimal-comma --separator ,
2|--follow needs a file|dump - --follow
2|excludes|dump record.tdms --follow -o empty/rows.csv
2|the output is the input file|dump record.tdms -o record.svg
1|the group "p" has no timestamp channel|dump groups --time-first
2|unknown command: nix|nix
0|^tdms [0-9.]+$|--version
END

# Files with every kind of damage: each command succeeds, or fails with a message.
for file in files/[1-9]* files/cut files/everything; do
    for command in info 'info --json' dump; do
        # shellcheck disable=SC2086  # a command and its option
        survives '[012]' "$tdms" $command "$file"
    done
done

# Pipes, and standard streams that are full or closed.
"$tdms" dump record.tdms >direct
"$tdms" dump - <record.tdms | cmp -s - direct || fail 'dump reads other values from standard input'
"$tdms" dump <(cat record.tdms) | cmp -s - direct || fail 'dump reads other values from a pipe'
("$tdms" dump record.tdms 2>err; echo $? >code) | head -1 >out
[[ $(cat code) == 0 && ! -s err ]] || fail 'dump failed because its reader went away'
within() { status 1 "$2" bash -c "$1"'; "$0" "$@"' "$tdms" "${@:3}"; }
within 'exec >/dev/full' 'space left' info record.tdms
within 'exec >&-' 'standard output: Bad file' info record.tdms
within 'exec <&-' 'reading: Bad file' info -

nothing_left
finish
