#!/bin/bash
# Runs the command-line tool over sound, torn and unusual files.
#     tool_test.sh TDMS RECORD SUMMARY        (paths of the three programs)
set -u
export LC_ALL=C TZ=UTC
tdms=$(realpath "$1") record=$(realpath "$2") summary=$(realpath "$3")
work=$(mktemp -d) && trap 'rm -rf "$work"' EXIT && cd "$work" || exit 1
failures=0
fail() { echo "FAILED: $1" && failures=$((failures + 1)); }
# status STATUS PATTERN COMMAND...: the command's exit status, and a pattern (of grep -E) that a line
# of its output or of its errors must match.
status() {
    local wanted=$1 pattern=$2 got && shift 2
    "$@" >out 2>err
    got=$?
    [[ $got == "$wanted" ]] || fail "$*: status $got, not $wanted: $(head -c 300 err)"
    [[ -z $pattern ]] || grep -qE -- "$pattern" out err ||
        fail "$*: no '$pattern' in: $(head -c 300 out err)"
    ! grep -q Sanitizer err || fail "$*: $(head -c 3000 err)"
}
same() { cmp -s "$1" "$2" || fail "$3: $(diff "$1" "$2" | head -5)"; }
# The bytes of a file, as escapes for printf %b. No name may hold a backslash.
u32() { printf '\\x%02x\\x%02x\\x%02x\\0' $(($1 & 255)) $(($1 >> 8 & 255)) $(($1 >> 16 & 255)); }
u64() { u32 "$1" && u32 0; }
path() { u32 ${#1} && printf %s "$1"; }
none='\xff\xff\xff\xff'
fixed() { u32 20 && u32 "$1" && u32 1 && u64 "$2"; }           # type, count
texts() { u32 28 && u32 32 && u32 1 && u64 "$1" && u64 "$2"; } # count, bytes
object() { path "$1" && printf %s "$2" && u32 0; }             # path, index
size() { printf %b "$1" | wc -c; }
segment() { # number of objects, objects, raw data
    local metadata=$(u32 "$1")$2
    printf %b 'TDSm\x0e\0\0\0\x69\x12\0\0' "$(u64 $(($(size "$metadata") + $(size "$3"))))" \
        "$(u64 "$(size "$metadata")")" "$metadata" "$3"
}
little_endian() { local i && for ((i = 14; i >= 0; i -= 2)); do printf '\\x%s' "${1:i:2}"; done; }
column() { local all='' each && for each; do all+=$each && u32 ${#all}; done && printf %s "$all"; }
# Doubles by their bits and the shortest texts that give them back, beside two columns of texts that
# need quotes and are shorter.
doubles=(3fb999999999999a 0.1 0000000000000001 5e-324 7fefffffffffffff 1.7976931348623157e+308
    8000000000000000 -0 3ff0000000000001 1.0000000000000002 fff0000000000000 -inf
    4340000000000001 9007199254740994)
one=('x,y' '' 'say "hi"' ' ') two=(A $'B\nC' "D'")
one_csv=('"x,y"' '""' '"say ""hi"""' ' ') two_csv=(A $'"B\nC"' "D'")
raw=''
echo '"g""/a,b","g""/s/1","g""/s/2"' >wanted.csv
for i in {0..6}; do
    raw+=$(little_endian "${doubles[2 * i]}")
    echo "${doubles[2 * i + 1]},${one_csv[i]-},${two_csv[i]-}" >>wanted.csv
done
a=$(column "${one[@]}") b=$(column "${two[@]}")
group="/'g\"'"
objects=$(object / $none)$(object "$group" $none)$(object "$group/'a,b'" "$(fixed 10 7)")
objects+=$(object "$group/'s/1'" "$(texts 4 "$(size "$a")")")
objects+=$(object "$group/'s/2'" "$(texts 3 "$(size "$b")")")
segment 5 "$objects" "$raw$a$b" >odd.tdms
status 0 'g' "$tdms" dump odd.tdms
same out wanted.csv 'quotes, doubles, two string channels'
status 0 'g' "$tdms" dump --crlf --from 4 --count 2 odd.tdms 'g"/s/2' 'g"/a,b'
printf '"g""/s/2","g""/a,b"\r\n,1.0000000000000002\r\n,-inf\r\n' >wanted
same out wanted 'columns and rows as asked for'
# A second group behind the first: its values are there, but the library does not read them.
objects=$(object "/'p'" $none)$(object "/'p'/'c'" "$(fixed 3 1)")
objects+=$(object "/'q'" $none)$(object "/'q'/'c'" "$(fixed 3 1)")
segment 4 "$objects" '\x7\0\0\0\x8\0\0\0' >groups.tdms
status 1 'groups.tdms: "q/c": channel data reads failed!' "$tdms" dump groups.tdms
printf 'p/c,q/c\n7,\n' >wanted
same out wanted 'the channel that can be read, and room for the other'
status 0 'not readable: "q/c"' "$tdms" check groups.tdms
# An object of no group behind one of the group.
(cat groups.tdms && segment 2 "$(object "/'p'/'d'" "$(fixed 3 0)")$(object / $none)" '') >foreign.tdms
status 1 '"p/c": .*foreign' "$tdms" dump foreign.tdms p

# A recording, whole, and cut at several places of its third segment.
"$record" whole.tdms 2 2000 || fail record
status 0 '^ +cpu idle +double +4000 .*unit = "%"' "$tdms" info whole.tdms
status 0 '"values": 4000' "$tdms" info --json whole.tdms
"$tdms" dump whole.tdms system/load --count 1 | tail -1 >first
"$summary" whole.tdms | grep -q "first $(cat first)," || fail 'the first value that summary prints'
status 0 '4 whole segments' "$tdms" check whole.tdms
read -r _ offset metadata raw _ < <(grep -E '^ +3 ' out)
for more in 1 28 $((28 + metadata)) $((27 + metadata + raw)); do
    head -c $((offset + more)) whole.tdms | tee before >torn.tdms
    status 1 "torn.tdms: segment 3 at offset $offset is torn: .*-5006" "$tdms" check torn.tdms
    status 1 'torn.tdms: file reads falied! \(-5006\)' "$tdms" info torn.tdms
    status 0 "kept: 2 segments, $offset bytes" "$tdms" salvage torn.tdms -o saved.tdms
    same torn.tdms before 'the torn file stays as it is'
    same saved.tdms <(head -c "$offset" whole.tdms) 'the whole segments'
    status 0 'cpu idle +double +2000 ' "$tdms" info saved.tdms
done
cp whole.tdms bad.tdms && printf X | dd of=bad.tdms bs=1 seek="$offset" conv=notrunc status=none
status 1 "segment 3 at offset $offset is damaged: .*-5002" "$tdms" check whole.tdms bad.tdms

# Nothing is written that is not complete, and never over the file itself.
ln -s torn.tdms link.tdms && mkdir empty
while IFS='|' read -r wanted pattern arguments; do
    eval "status '$wanted' '$pattern' '$tdms' $arguments"
done <<'END'
2|is the file to read|salvage torn.tdms -o link.tdms
2|is the file to read|salvage link.tdms -o ./torn.tdms
1|No such file|salvage torn.tdms -o empty/none/saved.tdms
1|nothing to keep|salvage wanted -o empty/saved.tdms
1|out.tdms: file path is error!.*No such file|info out.tdms
1|whole.tdms: 1 group|info missing.tdms whole.tdms
2|no channel or group "nix"|dump whole.tdms nix
2|\.svg or \.png|plot whole.tdms system -o picture.jpg
1|cannot be drawn|plot whole.tdms system/events -o empty/picture.svg
2|--from|dump whole.tdms --from x
2|unknown command: nix|nix
2|subcommand|
0|^tdms [0-9.]+$|--version
END
same torn.tdms before 'the torn file, after all that'

"$tdms" dump whole.tdms >direct # pipes and devices
"$tdms" dump - <whole.tdms | cmp -s - direct || fail 'standard input'
"$tdms" dump <(cat whole.tdms) | cmp -s - direct || fail 'a pipe'
("$tdms" dump whole.tdms 2>err; echo $? >code) | head -1 >out
[[ $(cat code) == 0 && ! -s err ]] || fail 'a reader that goes away'
"$tdms" info whole.tdms 2>err >/dev/full && fail 'a full disk' || grep -q 'space left' err || fail full

status 1 'gnuplot is needed' env PATH=/nonexistent "$tdms" plot whole.tdms system -o empty/p.svg
[[ -z $(ls empty) ]] || fail "left behind: $(ls empty)"
if command -v gnuplot >/dev/null; then
    status 0 'load' "$tdms" plot whole.tdms system/load
    status 0 '' "$tdms" plot odd.tdms 'g"/a,b' -o empty/picture.svg
    grep -q '>a,b<' empty/picture.svg || fail 'the label in the picture'
    [[ ! -s err && $(ls empty) == picture.svg ]] || fail "beside the picture: $(cat err) $(ls empty)"
fi
((failures == 0)) && echo "all passed"
