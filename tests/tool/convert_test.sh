#!/bin/bash
# Runs the tool's convert: CSV to TDMS and back, and to HDF5, which h5py reads.
# shellcheck disable=SC2016 source-path=SCRIPTDIR source=support.sh  # inner shells expand these
source "$(dirname "$0")/support.sh"
make_seeds
cp files/odd/* .
record_machine record.tdms 2 500

# The type that a column must get, its fields, and how they are dumped, if not as they were.
while IFS='|' read -r type fields dumped; do
    printf %b "x;y\n${fields//\\n/;1\\n};1\n" >in.csv
    status 0 '' "$tdms" convert in.csv -o out.tdms
    status 0 "^ +x +$type " "$tdms" info out.tdms
    status 0 '' "$tdms" dump out.tdms data/x
    same out <(printf %b "data/x\n${dumped:-$fields\n}") "a column of $type came back changed"
done <<'END'
bool|true\nfalse
string|true\n1
int64|-9223372036854775808\n7
int64| 1\n+2 |1\n2\n
uint64|0\n18446744073709551615
double|18446744073709551616\n-0\n-nan\ninf
double|1,5\n-1e3\n2|1.5\n-1000\n2\n
double|1\n\n3\n|1\nnan\n3\n
double|9007199254740993\n-.5|9007199254740992\n-0.5\n
string|1.5\n2,5|1.5\n"2,5"\n
string|1\n""
string|true\n\nfalse|true\n""\nfalse\n
timestamp|2026-05-04T10:00:00.123456789+02:00\n2026-05-04 10:00Z|2026-05-04T08:00:00.123456789Z\n2026-05-04T10:00:00.000000Z\n
END
status 0 '"data/x": integers beyond 2\^53 are rounded' "$tdms" convert - -o out.tdms <<<$'x\n9007199254740993\n0.5'

# round_trip FILE WHAT [OPTION]...: checks that a CSV file comes back unchanged.
round_trip() {
    status 0 '' "$tdms" convert "$1" -o back.tdms "${@:3}"
    status 0 '' "$tdms" dump back.tdms "${@:3}"
    same out "$1" "CSV with $2 came back changed"
}
printf '"g/a\n,""b""",g/c;d,g/tab\t,h/e\n"x,\r\n",1,,\n"say ""hi""",-2,,\n"",,,\n' >quotes.csv
printf '\xef\xbb\xbf' | cat - quotes.csv >marked.csv && sed -i 's/$/\r/' marked.csv
round_trip quotes.csv 'quotes, a shorter channel and one without values'
printf 'g/a;b\tc\n' >names.csv && round_trip names.csv 'only a name'
"$tdms" dump values 'g"/a,b' >doubles.csv && round_trip doubles.csv doubles
"$tdms" dump --units record.tdms >record.csv && round_trip record.csv 'a recording' --units
# Long enough for several saves, and for fields across the ends of buffers.
awk 'BEGIN { print "a/n,a/s"; for (i = 0; i < 400000; ++i) printf "%d.5,\"a \"\"string\"\"\n%d\"\n", i, i }' >long.csv
round_trip long.csv 'many values'
status 0 '^ +2 .* intact$' "$tdms" check back.tdms

# What cannot be converted is reported with its line, and no file is left.
mkdir empty
while IFS='|' read -r wanted pattern csv; do
    printf %b "$csv" >in.csv
    status "$wanted" "$pattern" "$tdms" convert in.csv -o empty/out.tdms
done <<'END'
1|file is empty|
1|line 3: 3 fields, but 2 names|a,b\n1\n1,2,3\n
1|line 2: text after a closing quote|a,b\n"x"y,1\n
1|line 4: a quote is not closed|a,b\n"x\n",1\n"y
1|cannot have a slash: "g/a/b"|g/a/b\n1\n
1|it has zero bytes|a\nx\0y\n
1|column 2 has values but no name|a,\n1,2\n
2|is a TDMS file already|TDSm
END
ln -s record.csv link.tdms && ln -s record.csv record.h5
{ cat record.tdms && printf 'TDSm\016'; } >truncated.tdms
each_status <<'END'
2|must end in .h5, .hdf5, .csv or .tdms|convert record.tdms -o empty/out.txt
2|CSV is converted only to .tdms|convert record.csv -o empty/out.h5
2|the output is the input file|convert record.csv -o ./link.tdms
2|the output is the input file|convert link.tdms -o record.h5
0|last 5 bytes are not a complete segment|convert truncated.tdms -o out.csv
1|last 5 bytes are not a complete segment|convert truncated.tdms -o out.csv --strict
END
"$tdms" dump record.tdms >direct
same out.csv direct 'convert and dump write different CSV'
status 1 'out.tdms" cannot be written: File too large' bash -c 'ulimit -f 100; "$@"' bash \
    "$tdms" convert long.csv -o empty/out.tdms
nothing_left

# HDF5: every type, names that it does not allow or that become the same, and properties of every kind.
cat >odd.csv <<'END'
g/,g/.,g/_,g/__2,g/..,./bool,./uint64,./time,./string,/int64,_/double
1,2,3,4,5,true,18446744073709551615,1969-12-31T23:59:59.999999999Z,ü,-9223372036854775808,0.5
,,,,,false,1,2024-01-01T00:00:00Z,"",7,nan
END
status 0 '' "$tdms" convert odd.csv -o odd.tdms
{
    le 4 1 1 && printf / && le 4 4294967295 5
    counted '' && le 4 1 && printf '\xfd'
    le 4 3 && printf 'a\0b' && le 4 32 3 && printf 'x\0y'
    counted t && le 4 68 && le 8 0 2082844800
    counted 't units' && le 4 32 && counted s && counted void && le 4 0
} >metadata
{ lead_in "$(stat -c %s metadata)" 0 && cat metadata; } >properties.tdms
cat >wanted.txt <<'END'
/
_
_/double <f8 [0.5, nan]
__2 original name=''
__2/int64 <i8 [-9223372036854775808, 7]
__3 original name='.'
__3/bool |b1 [True, False]
__3/string |O [b'\xc3\xbc', b'']
__3/time <i8 [-1, 1704067200000000000] units='ns since 1970-01-01T00:00:00Z'
__3/uint64 <u8 [18446744073709551615, 1]
g
g/.. <i8 [5]
g/_ <i8 [3]
g/__2 <i8 [4]
g/__3 <i8 [1] original name=''
g/__4 <i8 [2] original name='.'
/ _=-3 a_b=b'x\x00y' t=0 t units='s' t units_2='ns since 1970-01-01T00:00:00Z' void=Empty(dtype=dtype('<f8'))
/
g"
g"/a,b <f8 [0.1, 5e-324, 1.7976931348623157e+308, -0.0, 1.0000000000000002, -inf, 9007199254740994.0]
g"/s_1 |O [b'x,y', b'', b'say "hi"', b' '] original name='s/1'
g"/s_2 |O [b'A', b'B\nC', b"D'"] original name='s/2'
/
g
g/a <i4 [1, 4, 5]
g/c <i4 [2, 3]
g/s |O [b'say']
END
cat >read.py <<'END'
import h5py, sys

def show(name, item):
    values = [item.dtype.str, item[:].tolist()] if isinstance(item, h5py.Dataset) else []
    print(name, *values, *(f"{key}={item.attrs[key]!r}" for key in sorted(item.attrs)))

for name in sys.argv[2:]:
    with h5py.File(name) as f:
        show("/", f)
        f.visititems(show)
with h5py.File(sys.argv[1]) as f:
    n, s = f["a/n"], f["a/s"].asstr()
    assert n.chunks and n.compression == "gzip" and n.shuffle
    assert all(value == i + 0.5 for i, value in enumerate(n[:])) and len(n) == 400000
    assert all(value == f'a "string"\n{i}' for i, value in enumerate(s[:])) and len(s) == 400000
END
python=/usr/bin/python3
if "$tdms" convert back.tdms -o long.h5 2>&1 | grep -q 'built without HDF5'; then
    echo 'HDF5 is not tested: the tool was built without it'
elif ! $python -c 'import h5py' 2>/dev/null; then
    echo 'HDF5 is not read back: there is no h5py'
else
    each_status <<'END'
0||convert odd.tdms -o odd.h5
0|the attribute "a\\x00b" is named "a_b"|convert properties.tdms -o properties.h5
0||convert values -o values.HDF5
1|"g/c": 2 values lost|convert lost -o lost.h5
1|"g/s": 1 string truncated|convert lost -o lost.h5
1|last 5 bytes are not a complete segment|convert truncated.tdms -o truncated.h5 --strict
END
    $python read.py long.h5 odd.h5 properties.h5 values.HDF5 lost.h5 >shown 2>&1
    same shown wanted.txt 'h5py does not read what was converted'
    for blocks in 10 1000; do # of KiB: HDF5 fails in other places, also when it closes
        status 1 'out.h5" cannot be written: File too large' bash -c 'ulimit -f "$1"; shift; "$@"' \
            bash $blocks "$tdms" convert back.tdms -o empty/out.h5
    done
    nothing_left
fi
finish
