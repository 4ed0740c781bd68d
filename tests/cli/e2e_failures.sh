# End to end: interrupted runs keep the old index; errors are one clear line.
source "$(dirname "$0")/cli_test_helpers.sh"

one_line_error() {  # description
  [ "$(printf '%s\n' "$ERR" | wc -l)" -eq 1 ] || fail "$1: not one line of error"
  case "$ERR" in kurvo:*) ;; *) fail "$1: error does not start with kurvo:" ;; esac
}

kurvo search anything
expect_status 2 "search without an index"
one_line_error "search without an index"

D="$WORK/docs"
put "$D/alpha.txt" "original content"
kurvo index "$D"
expect_status 0 "index"

# The status callback answers "stop" at once: the run halts and the old
# index stays as it was.
N="$WORK/newdocs"
put "$N/beta.txt" "replacement content"
KURVO_HALT_AFTER=1 kurvo index "$N"
expect_status 130 "interrupted index"
finds "$D/alpha.txt" "old index still searchable after an interrupted index" search original
finds "" "interrupted run added nothing" search replacement
[ ! -e "$KURVO_HOME/indexes/default/store.new" ] || fail "work folder left behind"

sleep 1
put "$D/alpha.txt" "changed content"
KURVO_HALT_AFTER=1 kurvo update
expect_status 130 "interrupted update"
finds "$D/alpha.txt" "old index still searchable after an interrupted update" search original
kurvo update
expect_status 0 "update after the interruption"
finds "$D/alpha.txt" "the next update takes the change in" search changed

kurvo index "$WORK/no/such/folder"
expect_status 2 "missing folder"
one_line_error "missing folder"
kurvo search '(original'
expect_status 2 "bad query"
one_line_error "bad query"
kurvo search --limit x original
expect_status 2 "bad option"
kurvo update --bogus
expect_status 2 "unknown option"
kurvo --index 'a/b' search original
expect_status 2 "bad index name"
one_line_error "bad index name"

# A damaged summary file: one line, status 2, no crash.
printf 'garbage' >"$KURVO_HOME/indexes/default/store/hash"
kurvo search original
expect_status 2 "corrupt store"
one_line_error "corrupt store"
kurvo update
expect_status 2 "update of a corrupt store"
one_line_error "update of a corrupt store"
# A file table whose records are garbage behind an intact header.
kurvo index "$D"
files="$KURVO_HOME/indexes/default/store/files"
size=$(stat -c %s "$files")
head -c $((size - 16)) /dev/zero | tr '\0' '\377' | dd of="$files" bs=1 seek=16 conv=notrunc status=none
kurvo search original
expect_status 2 "damaged file table"
one_line_error "damaged file table"
kurvo update
expect_status 2 "update of a damaged file table"
one_line_error "update of a damaged file table"
# Rebuilding repairs it.
kurvo index "$D"
expect_status 0 "rebuild over a corrupt store"
finds "$D/alpha.txt" "rebuilt index" search changed

finish
