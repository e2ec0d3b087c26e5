# shellcheck shell=bash
# For the tests of programs: a folder to work in, and checks. The tests of the tool get the paths of the
# programs that they run as arguments:
#     NAME_test.sh TDMS RECORD SUMMARY SEEDS
set -u
export LC_ALL=C TZ=UTC
# shellcheck disable=SC2034  # used by the tests
(($# < 4)) || tdms=$(realpath "$1") record=$(realpath "$2") summary=$(realpath "$3") seeds=$(realpath "$4")
work=$(mktemp -d) && trap 'rm -rf "$work"' EXIT && cd "$work" || exit 1
failures=0
fail() { echo "FAILED: $1" && failures=$((failures + 1)); }
make_seeds() { "$seeds" files || fail 'the seeds were not made'; }
record_machine() { "$record" "$@" || fail "record $*: it did not succeed"; } # FILE SECONDS RATE
nothing_left() { [[ -z $(ls -A empty) ]] || fail "files remain: $(ls -A empty)"; }

# status STATUS PATTERN COMMAND...: checks the exit status of a command against a pattern of the shell, and
# that a line on its standard output or standard error matches a pattern of grep -E.
status() {
    local wanted=$1 pattern=$2 && shift 2
    "$@" >out 2>err
    got=$?
    # shellcheck disable=SC2053  # a pattern
    [[ $got == $wanted ]] || fail "$*: status $got, not $wanted: $(head -c 300 err)"
    [[ -z $pattern ]] || grep -qE -- "$pattern" out err ||
        fail "$*: it did not print '$pattern' but: $(head -c 300 out err)"
    ! grep -q Sanitizer err || fail "$*: a sanitizer found: $(head -c 3000 err)"
}

# survives STATUS COMMAND...: checks that a command ends in time, and reports something if it fails.
survives() {
    status "$1" '' timeout 20 "${@:2}"
    ((got == 0)) || grep -q '^tdms: ' err || fail "${*:2}: it failed without a message"
}

# same FILE EXPECTED FAULT: checks that two files are the same.
same() { diff "$1" "$2" >differences || fail "$3: $(head -5 differences)"; }

# each_status <<END: checks runs of the tool, one on each line: STATUS|PATTERN|ARGUMENTS.
each_status() {
    while IFS='|' read -r wanted pattern arguments; do
        eval "status '$wanted' '$pattern' '$tdms' $arguments"
    done
}

# le WIDTH NUMBER...: prints the bytes of numbers in the byte order of the files.
le() {
    local width=$1 number i && shift
    for number; do for ((i = 0; i != width; ++i)); do printf %b "\\x$(printf %x $((number >> 8 * i & 255)))"; done; done
}

# lead_in METADATA RAW: prints the lead-in of a segment with so many bytes of each.
lead_in() { printf TDSm && le 4 14 4713 && le 8 $(($1 + $2)) "$1"; }

# counted STRING: prints it as files store it.
counted() { le 4 ${#1} && printf %s "$1"; }

finish() { ((failures == 0)) && echo "all passed"; }
