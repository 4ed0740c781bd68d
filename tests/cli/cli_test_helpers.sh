# Shared helpers of the kurvo end-to-end tests; sourced by the e2e_*.sh scripts.
# Usage of a script: bash e2e_x.sh /path/to/kurvo /scratch/folder
set -u

KURVO_BIN="$1"
SCRATCH_ROOT="$2"
mkdir -p "$SCRATCH_ROOT"
WORK="$(mktemp -d "$SCRATCH_ROOT/run.XXXXXX")"
WORK="$(cd "$WORK" && pwd -P)"
# Four levels keep the index's skip folder (three above the store) inside WORK.
export KURVO_HOME="$WORK/home"
export NO_COLOR=1
FAILURES=0
trap 'rm -rf "$WORK"' EXIT

# kurvo ARGS...: runs the command; sets OUT, ERR and STATUS.
kurvo() {
  OUT="$("$KURVO_BIN" "$@" 2>"$WORK/stderr")"
  STATUS=$?
  ERR="$(cat "$WORK/stderr")"
}

fail() {
  printf 'FAIL: %s\n  stdout: %s\n  stderr: %s\n' "$*" "$OUT" "$ERR" >&2
  FAILURES=$((FAILURES + 1))
}

expect_status() { [ "$STATUS" -eq "$1" ] || fail "$2: exit status $STATUS, expected $1"; }  # expected, description
expect_out() { [ "$OUT" = "$1" ] || fail "$2: unexpected output; expected:
$1"; }  # exact expected stdout, description
expect_contains() { case "$OUT" in *"$1"*) ;; *) fail "$2: output lacks '$1'" ;; esac; }  # text, description
expect_lacks() { case "$OUT" in *"$1"*) fail "$2: output holds '$1'" ;; esac; }  # text, description

# succeeds DESCRIPTION ARGS...: `kurvo ARGS` exits 0.
succeeds() { local what="$1"; shift; kurvo "$@"; expect_status 0 "$what"; }
# shows TEXT DESCRIPTION ARGS...: `kurvo ARGS` exits 0 and prints TEXT among its output.
shows() { local text="$1"; shift; succeeds "$@"; expect_contains "$text" "$1"; }

# finds EXPECTED DESCRIPTION ARGS...: `kurvo ARGS` prints exactly EXPECTED,
# with status 0, or status 1 when EXPECTED is empty (nothing found).
finds() {
  local expected="$1" what="$2"
  shift 2
  kurvo "$@"
  expect_status "$([ -n "$expected" ] && echo 0 || echo 1)" "$what"
  expect_out "$expected" "$what"
}

# fails DESCRIPTION ARGS...: `kurvo ARGS` exits 2 with one line of error that starts with "kurvo:".
fails() {
  local what="$1"
  shift
  kurvo "$@"
  expect_status 2 "$what"
  [ "$(printf '%s\n' "$ERR" | wc -l)" -eq 1 ] || fail "$what: not one line of error"
  case "$ERR" in kurvo:*) ;; *) fail "$what: error does not start with kurvo:" ;; esac
}

# fails_saying TEXT DESCRIPTION ARGS...: the same, with TEXT in the error.
fails_saying() {
  local text="$1"
  shift
  fails "$@"
  case "$ERR" in *"$text"*) ;; *) fail "$1: the error lacks '$text'" ;; esac
}

# Writes a file, creating its folder; the content ends in a line feed.
put() { mkdir -p "$(dirname "$1")" && printf '%s\n' "$2" >"$1"; }  # path, text

finish() {
  [ "$FAILURES" -eq 0 ] || { echo "$FAILURES check(s) failed" >&2; exit 1; }
  echo "all checks passed"
}
