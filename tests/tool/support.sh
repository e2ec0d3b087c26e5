# For the tests of the tool: a folder to work in, and checks. A test sources this with the paths of the
# programs that it runs:
#     NAME_test.sh TDMS RECORD SUMMARY SEEDS
set -u
export LC_ALL=C TZ=UTC
tdms=$(realpath "$1") record=$(realpath "$2") summary=$(realpath "$3") seeds=$(realpath "$4")
work=$(mktemp -d) && trap 'rm -rf "$work"' EXIT && cd "$work" || exit 1
failures=0
fail() { echo "FAILED: $1" && failures=$((failures + 1)); }

# status STATUS PATTERN COMMAND...: the command's exit status, as a pattern of the shell, and a pattern
# (of grep -E) that a line of its output or of its errors must match.
status() {
    local wanted=$1 pattern=$2 && shift 2
    "$@" >out 2>err
    got=$?
    [[ $got == $wanted ]] || fail "$*: status $got, not $wanted: $(head -c 300 err)"
    [[ -z $pattern ]] || grep -qE -- "$pattern" out err ||
        fail "$*: no '$pattern' in: $(head -c 300 out err)"
    ! grep -q Sanitizer err || fail "$*: $(head -c 3000 err)"
}

# same FILE OTHER WHAT: that two files are the same.
same() { diff "$1" "$2" >differences || fail "$3: $(head -5 differences)"; }

# each_status <<END: lines of STATUS|PATTERN|ARGUMENTS, each a run of the tool.
each_status() {
    while IFS='|' read -r wanted pattern arguments; do
        eval "status '$wanted' '$pattern' '$tdms' $arguments"
    done
}

# Bytes of numbers in the files' byte order: le WIDTH NUMBER...
le() {
    local width=$1 number i && shift
    for number; do for ((i = 0; i != width; ++i)); do printf %b "\\x$(printf %x $((number >> 8 * i & 255)))"; done; done
}

finish() { ((failures == 0)) && echo "all passed"; }
