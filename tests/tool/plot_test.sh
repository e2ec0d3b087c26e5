#!/bin/bash
# Runs the tool's plot, and checks what it draws and what it reports.
# shellcheck disable=SC2016 source-path=SCRIPTDIR source=support.sh  # inner shells expand these
source "$(dirname "$0")/support.sh"

# What needs no gnuplot.
record_machine record.tdms 1 500
make_seeds
cp files/odd/* . && ln -s record.tdms record.svg && mkdir empty
each_status <<'END'
2|the output is the input file|plot record.svg system -o record.svg
2|must end in \.svg or \.png|plot record.tdms system -o picture.jpg
2|not a size: "99999x300"|plot record.tdms system -o empty/p.svg --size 99999x300
2|needs a file that can grow|plot - --follow <record.tdms
2|did you mean "system/load"|plot record.tdms system/laod -o empty/p.svg
1|"system/events": string values cannot be drawn|plot record.tdms system/events -o empty/p.svg
1|"system/time": timestamp values cannot|plot record.tdms system/time --follow
2|--until excludes --follow|plot record.tdms --until 2024-02-01 --follow
1|nothing to draw|plot record.tdms system --since 2200-01-01 -o empty/p.svg
1|2 panels need a height|plot record.tdms system/load 'system/memory used' -o empty/p.svg --size 400x200
END
status 1 'gnuplot is needed' env PATH=/nonexistent "$tdms" plot record.tdms system -o empty/p.svg
mkdir bin && printf '#!/bin/sh\nkill $PPID; exec sleep 1\n' >bin/gnuplot && chmod +x bin/gnuplot
status 143 '' env PATH="$PWD/bin:$PATH" "$tdms" plot record.tdms system -o empty/p.svg 2>/dev/null
nothing_left
command -v gnuplot >/dev/null || { finish && exit; }

# channel GROUP NAME TYPE 'VALUES' [PROPERTY]...: adds a channel to the segment that write FILE puts in a
# file. Values have 1 byte, or 8 bytes if the type takes them. PROPERTY is NAME=STRING, NAME:INTEGER, or
# NAME@DOUBLE, which is given as the integer of the same bytes.
begin() { : >objects && : >raw && objects=0; }
channel() {
    local path="/'$1'/'$2'" type=$3 values width=1 property
    read -ra values <<<"$4" && shift 4
    [[ $type == @(4|8|10) ]] && width=8
    {
        counted "$path" && le 4 20 "$type" 1 && le 8 ${#values[@]} && le 4 $#
        for property; do
            counted "${property%%[=@:]*}"
            case $property in
                *=*) le 4 32 && counted "${property#*=}" ;;
                *@*) le 4 10 && le 8 "${property#*@}" ;;
                *) le 4 3 "${property#*:}" ;;
            esac
        done
    } >>objects
    if ((type == 0x44)); then
        for value in "${values[@]}"; do le 8 0 $((value + 2082844800)); done
    else
        le $width "${values[@]}"
    fi >>raw
    ((++objects))
}
write() {
    local metadata=$(($(wc -c <objects) + 4))
    { lead_in "$metadata" "$(wc -c <raw)" && le 4 "$objects" && cat objects raw; } >"$1"
    begin
}
begin

# draws FILE PANELS TEXTS [ARGUMENT]...: checks the number of panels, and that TEXTS, one per line, are in
# the picture, except for those after a -, which must not be there.
draws() {
    local file=$1 panels=$2 texts=$3 text && shift 3
    status 0 '' "$tdms" plot "$file" "$@" -o p.svg
    [[ ! -s err ]] || fail "plot $file $*: it reported: $(cat err)"
    drawn=$(grep -c 'id="gnuplot_plot_1[a-z]*"' p.svg)
    ((drawn == panels)) || fail "plot $file $*: it drew $drawn panels, not $panels"
    sed -n 's/.*<text>\(.*\)<\/text>.*/\1/p; s/.*<tspan[^>]*>\(.*\)<\/tspan>.*/\1/p' p.svg |
        sed 's/<[^>]*>//g' >drawn
    while read -r text; do
        if [[ $text == -* ]]; then
            ! grep -qxF -- "${text#-}" drawn || fail "plot $file $*: it drew '${text#-}'"
        else
            grep -qxF -- "$text" drawn || fail "plot $file $*: it did not draw '$text' but: $(tr '\n' '|' <drawn)"
        fi
    done <<<"$texts"
}

# Prints the points of the first curve, one per line, after M or L.
curve() {
    sed -n "/gnuplot_plot_1a/,/'\/>/p" p.svg | grep -o '[ML][0-9.]*,[0-9.]*'
}

monday=1777888800 # 2026-05-04T10:00:00Z
channel g time 0x44 "$monday $((monday + 1)) $((monday + 4))"
channel g a 1 '1 2 3' unit=V
channel g b 1 '2 3 4' unit=V 'name=the other'
channel h time 0x44 "$((monday + 86400)) $((monday + 86401))"
channel h a 1 '5 6' unit=A
write times.tdms
draws times.tdms 1 $'a\nthe other\n-b\nV\n10:00:01.0\ntime (UTC), 2026-05-04\ntimes.tdms' g
draws times.tdms 2 $'g/a\nh/a\nA\n2026-05-05\ntime (UTC), 2026-05-04 to 2026-05-05'
TZ=CET-1CEST,M3.5.0,M10.5.0/3 draws times.tdms 1 $'12:00:01.0\ntime (UTC+02:00), 2026-05-04' g --local

nan=9221120237041090560 one=4607182418800017408 two=4611686018427387904
channel g rated 1 '1 2 3 4' 'sampling rate:2'
channel g counted 1 '4 5 6 7 8 9 10 11'
channel g large 10 "$one 4671226772094713856" # 20000
channel g on 0x21 '0 1 1 0'
channel g off 0x21 '1 0 1 1'
channel g gaps 10 "$one $nan $two $two $nan $nan $one" unit=m
write kinds.tdms
draws kinds.tdms 1 $'seconds from the first sample\n1.4\n-sample' g/rated
draws kinds.tdms 5 $'seconds from the first sample\nsample\n20000\ntrue\nfalse\nm'
# The third value and the fourth are connected; the others are points.
draws kinds.tdms 1 m g/gaps
[[ $(curve | tr -dc ML) == MMLM ]] || fail "the line is not interrupted where values are not numbers: $(curve)"
(($(grep -c '<use.*translate' p.svg) == 4)) || fail 'values between two that are not numbers are not drawn as points'

# Extreme values, values that are too large, and values that are not numbers.
max=9218868437227405311 inf=9218868437227405312 min_int=$((1 << 63))
channel g int64 4 "$min_int $((~min_int))"
channel g uint64 8 '0 -1'
channel g rate 1 '0 1' 'sampling rate@1' # 5e-324
write extremes.tdms
draws extremes.tdms 2 $'int64\nuint64\n1e+19\nsample\n-seconds from the first sample'
channel g partly 10 "$one $max $two -1 $inf $max"
channel g wholly 10 "$max $max"
channel g none 10 "$nan $inf"
write large.tdms
each_status <<'END'
1|"g/partly": 2 numbers left out: too large|plot large.tdms g -o p.svg
1|"g/wholly": its numbers are too large|plot large.tdms g -o p.svg
1|"g/none": it has no numbers|plot large.tdms g/none -o empty/p.svg
END

# Gaps in times: the line is interrupted only if the other steps are regular.
# gaps 'TIMES' BREAKS [ARGUMENT]...: checks how often the line is interrupted.
gaps() {
    local times breaks=$2 i
    read -ra times <<<"$1" && shift 2
    channel g time 0x44 "$(for i in "${times[@]}"; do printf '%d ' $((monday + i)); done)"
    channel g a 1 "$(seq -s' ' ${#times[@]})"
    write gaps.tdms
    draws gaps.tdms 1 a "$@"
    drawn=$(curve | grep -c M)
    ((drawn == breaks + 1)) || fail "plot gaps.tdms $*: a line with gaps has $drawn parts, not $((breaks + 1))"
}
regular="$(seq -s' ' 0 40)"
gaps "$regular $(seq -s' ' 60 80) $(seq -s' ' 90 99)" 2
gaps "$regular 45 46 47" 0                                   # only five times as long
gaps "0 1 20 21 40 41 42 70 71 72 73 90 91 92 93 94" 0       # irregular
gaps "$(seq -s' ' 0 300) $(seq -s' ' 310 400)" 1 --size 200x600 # more than a column
at() { date -u -d "@$((monday + $1))" +%FT%TZ; }
gaps "$regular $(seq -s' ' 60 80)" 0 --since "$(at 50)"
grep -q '10:01:20' drawn || fail "plot --since did not draw the last samples: $(cat drawn)"
gaps "$regular $(seq -s' ' 60 80)" 0 --until "$(at 50)"
! grep -q '10:01' drawn || fail "plot --until drew later samples: $(cat drawn)"
# Prints where texts that match a pattern are, row by row: Y X.
places() {
    grep -B1 -E ">($1)<" p.svg | sed -n 's/.*translate(\([0-9.]*\),\([0-9.]*\)).*/\2 \1/p' | sort -k1,1n -k2,2n
}

# Texts must not overlap or reach beyond the picture.
for i in 1 2 3; do channel g "$(printf 'W%.0s' {1..20})$i" 1 '1 2'; done
write legend.tdms
draws legend.tdms 1 sample
places 'W+[123]' | awk '$1 == y && $2 < x + 270 { exit 1 } { y = $1; x = $2 }' ||
    fail "names in the legend overlap: $(places 'W+[123]')"
channel g time 0x44 "$monday $((monday + 1)) $((monday + 2))"
channel g a 1 '1 2 3'
write seconds.tdms
draws seconds.tdms 1 10:00:02.0
places 10:00:02.0 | awk '{ exit !($2 > 800 && $2 < 862) }' || fail "the last label is not within the picture: $(places 10:00:02.0)"

# Names that gnuplot must not run or interpret, long names, and an empty one.
odd="'; system('touch pwned') # \`touch pwned\` ]]>"
channel g "$odd" 1 '1 2' "unit='\`id\`"
channel g '' 1 '3 4' unit=x
channel g "$(printf 'x%.0s' {1..200}) 1" 1 '1 2' unit=x
channel g "$(printf 'x%.0s' {1..200}) 2" 1 '1 2' unit=x
write odd.tdms
cp odd.tdms "'; x \`touch pwned\`.tdms"
draws "'; x \`touch pwned\`.tdms" 2 "'; system('touch pwned') # \`touch pwned\` ]]$(printf '\xe2\x80\x8b')>
(no name)
'; x \`touch pwned\`.tdms"
[[ ! -e pwned ]] || fail 'gnuplot ran a name as a command'
[[ $(grep -c '^x*…x* [12]$' drawn) == 2 ]] || fail "long names lost their ends: $(cat drawn)"

# A panel with many curves, and many panels.
for i in {1..20}; do channel g "curve $i" 1 "$i $((i + 1))" unit=V; done
for i in {1..20}; do channel h "panel $i" 1 "$i $((i + 1))" "unit=u$i"; done
write many.tdms
draws many.tdms 21 "$(printf 'curve %d\n' {1..20} && printf 'panel %d\n' {1..20})"
draws many.tdms 1 V g --size 1000x300
grep -q 'width="1000" height="300"' p.svg || fail "the picture has another size: $(head -3 p.svg)"
status 0 '' "$tdms" plot many.tdms -o p.PNG --size 900x4000
[[ $(head -c 4 p.PNG) == *PNG ]] || fail 'p.PNG is no picture'

# More samples than columns: the extremes of each column must be drawn.
channel g spike 1 "$(printf '0 %.0s' {1..2999})100 $(printf '0 %.0s' {1..3000})" unit=V
write spike.tdms
draws spike.tdms 1 $'100\n5000' --size 300x300
(($(curve | cut -d, -f2 | sort -u | wc -l) == 2)) || fail 'the spike is not drawn'
(($(curve | wc -l) < 4000)) || fail 'more samples are drawn than can be seen'

# What cannot be drawn is reported, and the rest is drawn.
status 1 'lost: "g/c": 2 values lost' "$tdms" plot lost -o lost.svg
[[ -s lost.svg ]] || fail 'the channels that can be drawn are not drawn'
"$record" complete.tdms 2 500 && head -c -1 complete.tdms >truncated.tdms
status 1 'not a complete segment' "$tdms" plot truncated.tdms --strict -o truncated.svg
for file in files/[1-9]* files/cut files/everything; do
    survives '[012]' "$tdms" plot "$file" -o p.svg
done
status 1 'p.svg" cannot be written' bash -c 'ulimit -f 3; "$0" plot values -o empty/p.svg' "$tdms"
nothing_left

# In a terminal, which has 80 columns and 25 rows unless it reports another size.
status 0 '^  \* a   # the other   \[V\]$' "$tdms" plot times.tdms g
(($(wc -l <out) == 24 && $(wc -L <out) <= 80)) || fail "the drawing does not fit the terminal, but has lines and columns: $(wc -lL <out)"
"$record" growing.tdms 3 50 &
until [[ -s growing.tdms ]]; do sleep 0.1; done
status 0 '\* load' timeout -s INT --preserve-status 5 "$tdms" plot --follow growing.tdms system/load
wait
(($(grep -c '^growing.tdms$' out) > 1)) || fail 'plot --follow did not draw what was added'
finish
