#!/bin/bash
# Runs the tool's check and salvage on truncated and damaged files of every kind.
# shellcheck disable=SC2016 source-path=SCRIPTDIR source=support.sh  # inner shells expand these
source "$(dirname "$0")/support.sh"
make_seeds
record_machine record.tdms 4 500

# A recording, truncated at several places.
status 0 '^4 intact segments, .* 16,008 values$' "$tdms" check record.tdms
[[ $(wc -l <out) == 5 ]] || fail "segments of the same form do not share a line: $(cat out)"
read -r _ first metadata raw _ < <(grep -E '^ +2-4 ' out)
size=$((28 + metadata + raw)) offset=$((first + 28 + metadata + raw))
ln -s kept.tdms saved.tdms
while IFS='~' read -r more reason; do
    head -c $((offset + more)) record.tdms | tee before >truncated.tdms
    reason=$(sed ':a; s/\B[0-9]\{3\}\>/,&/; ta' \
        <<<"$reason are stated, $((more > 28 ? more - 28 - metadata : 0)) are there")
    status 1 "^tdms: truncated.tdms: truncated at byte $offset: segment 3 begins there: $reason" \
        "$tdms" check truncated.tdms
    status 0 "^lost: .* from offset $offset to $((offset + more)): truncated: $reason" \
        "$tdms" salvage truncated.tdms -o saved.tdms
    same truncated.tdms before 'salvage changed its input'
    same kept.tdms <(head -c "$offset" record.tdms) 'salvage did not keep exactly the intact segments'
done <<END
28~$metadata bytes of metadata
$((28 + metadata))~$raw bytes of raw data
$((27 + metadata + raw))~$raw bytes of raw data
END
head -c $((offset + 1)) record.tdms >truncated.tdms
status 1 'of the 28 bytes of its lead-in, 1 is there; a file that is being recorded looks' "$tdms" check truncated.tdms
status 0 '^kept: 2 segments, 73,493 bytes, 8,004 values' "$tdms" salvage truncated.tdms -o saved.tdms

# Some bytes of segment 2 are replaced; the other segments are intact.
{ head -c "$first" record.tdms && tail -c +$((offset + 1)) record.tdms; } >others
while IFS='~' read -r from length text checked lost; do
    { head -c $((first + from)) record.tdms && printf %s "$text" &&
        tail -c +$((first + from + length + 1)) record.tdms; } >bad.tdms
    status 1 "^tdms: bad.tdms: $checked" "$tdms" check --quiet bad.tdms record.tdms
    [[ ! -s out ]] || fail "check --quiet printed: $(cat out)"
    status 1 "^lost: .* from offset $first to .*: $lost" "$tdms" salvage bad.tdms -o saved.tdms
    same kept.tdms others "salvage did not keep the other segments after $length bytes at $from became '$text'"
done <<END
0~1~X~damaged at byte $first: segment 2: no segment begins there~no segment
4~1~X~damaged at byte $first: segment 2: its table of contents is 88, not 14~its table
8~1~X~damaged at byte $first: segment 2: its version is 4696, not 4713~its version
13~1~Z~damaged at byte~its length is not that of its data
18~1~X~truncated at byte $first~truncated: .* bytes of raw data
22~1~X~damaged at byte $first: segment 2: the next segment is stated~the next
32~1~X~damaged at byte $first: segment 2: its object 1, at byte 4~its object 1
0~700~garbage~damaged at byte $first~no segment
$((size - 1000))~900~~damaged at byte $offset~its length
$((size - 1))~1~~damaged at byte $offset~its length
END

# Segments of int32 values of the channel g/c: with an index, or with that of the segment before.
values() { lead_in 40 $((4 * $#)) && le 4 1 && counted "/'g'/'c'" && le 4 20 3 1 && le 8 $# && le 4 0 "$@"; }
as_before() { lead_in 24 $((4 * $#)) && le 4 1 && counted "/'g'/'c'" && le 4 0 0 "$@"; }
pair() { # FORM VALUE VALUE VALUE: one of g/c, two of g/d; with indexes, or those of before
    local name count=1
    lead_in $(($1 == 20 ? 76 : 44)) 12 && le 4 2
    for name in c d; do
        counted "/'g'/'$name'" && le 4 "$1"
        (($1 == 0)) || { le 4 3 1 && le 8 $((count++)); }
        le 4 0
    done
    le 4 "${@:2}"
}
for _ in {1..40}; do values 1 && values 1 2; done >alternating.tdms
status 0 '^ +51-80 .* various .* 45  intact$' "$tdms" check alternating.tdms

damaged() { "$@" | sed s/TDSm/XXXX/; }
# A segment with a string that holds the bytes of another file.
values 666 >inner && size=$(stat -c %s inner)
embedding() {
    lead_in 48 $((4 + size)) && le 4 1 && counted "/'g'/'s'" && le 4 28 32 1 && le 8 1 $((4 + size)) && le 4 0 "$size" && cat inner
}
while IFS='~' read -r wanted segments kept; do
    eval "{ values 0; $segments; }" >bad.tdms
    status "$wanted" '^kept' "$tdms" salvage bad.tdms -o saved.tdms && cp out report
    status 0 '' "$tdms" check -q saved.tdms
    "$tdms" dump saved.tdms g/c | tail -n +2 | xargs >out
    [[ $(cat out) == "0 $kept" ]] || fail "$segments: salvage kept $(cat out report)"
done <<'END'
0~values 1 2; as_before 3 4~1 2 3 4
1~values 1 2; echo; as_before 3 4; as_before 5 6~1 2 3 4 5 6
1~values 1 2; echo; as_before 3 4 5 6; values 7~1 2 7
1~damaged values 1 2; as_before 3; values 4~3 4
1~damaged values 1 2; as_before 3 4; as_before 5 6; values 7~7
1~pair 20 1 2 3; damaged values 4; pair 20 5 6 7; pair 0 8 9 10~1 5 8
1~pair 20 1 2 3; damaged values 4; pair 0 5 6 7; values 8~1 8
0~embedding; values 1~1
1~embedding; damaged values 1; values 2~2
1~damaged embedding; values 1~1
1~embedding | sed "s/.'g'.'s'/XXXXXXXX/"; values 1~1
1~embedding | head -c -3; values 1; values 2~1 2
END
{ values 0; embedding | head -c -1; } >bad.tdms
status 0 '^kept: 1 segment,' "$tdms" salvage bad.tdms -o saved.tdms

# Values that are stated but not stored, as after save_file() with several timestamp channels, or that
# cannot be read.
{
    lead_in 76 32 && le 4 2
    for name in a b; do counted "/'g'/'$name'" && le 4 20 0x44 1 && le 8 2 && le 4 0; done
    le 8 0 4000000000 0 4000000001
} >two_times
{ embedding | head -c -$((4 + size)) && le 4 9999 && cat inner; } >strings.tdms
while IFS='~' read -r file message; do
    status 1 "^tdms: $file: $message$" "$tdms" check -q "$file"
    [[ ! -s out && $(wc -l <err) == 1 ]] || fail "check -q $file: it printed more than one message: $(cat out err)"
done <<'END'
two_times~"g/a": 2 values lost: stated but not stored in the file
files/odd/lost~"g/c": 2 values lost: stated but not stored in the file
strings.tdms~"g/s": strings cannot be read from value 0 on
END

# Standard output, pipes, and targets that cannot be written. Only complete files may appear.
mkdir empty && ln -s truncated.tdms link.tdms && cp record.tdms x.tdms && echo text >text && : >none
each_status <<'END'
2|the output is the input file|salvage truncated.tdms -o link.tdms
2|the output is the input file|salvage link.tdms -o ./truncated.tdms
1|No such file|salvage truncated.tdms -o empty/none/saved.tdms
1|^tdms: text: not a TDMS file; there is nothing to keep$|salvage text -o empty/saved.tdms
1|^tdms: text: not a TDMS file$|check -q text
1|^tdms: missing: cannot be opened: No such file|check missing record.tdms
0|^kept: 0 segments|salvage none -o none.tdms
0|^0 intact segments|check none
END
# shellcheck disable=SC2094  # the tool must notice
"$tdms" salvage x.tdms -o - >>x.tdms 2>err && fail 'salvage accepted its input as standard output'
same x.tdms record.tdms 'salvage wrote to its input'
status 1 'File too large' bash -c 'ulimit -f 20; "$0" salvage record.tdms -o empty/saved.tdms' "$tdms"
TMPDIR=$PWD/empty "$tdms" salvage - -o - < <(cat truncated.tdms) 2>err | cmp - <(head -c "$offset" record.tdms) ||
    fail 'salvage from a pipe to standard output did not keep exactly the intact segments'
grep -q '^kept: 2 segments' err || fail "salvage to standard output did not report on standard error: $(cat err)"
nothing_left

# Files with every kind of damage: what salvage keeps is intact.
for file in files/[1-9]* files/cut files/everything files/odd/*; do
    rm -f saved
    survives '[01]' "$tdms" check "$file"
    status '[01]' '' timeout 20 "$tdms" salvage "$file" -o saved
    [[ ! -e saved ]] || status 0 '' "$tdms" info --strict saved
done
finish
