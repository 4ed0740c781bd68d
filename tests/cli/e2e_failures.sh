# End to end: interrupted runs keep the old index; errors are one clear line.
source "$(dirname "$0")/cli_test_helpers.sh"

fails "search without an index" search anything

D="$WORK/docs"
put "$D/alpha.txt" "original content"
succeeds "index" index "$D"

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
succeeds "update after the interruption" update
finds "$D/alpha.txt" "the next update takes the change in" search changed

fails "missing folder" index "$WORK/no/such/folder"
fails "bad query" search '(original'
fails "bad option" search --limit x original
fails "unknown option" update --bogus
fails "bad index name" --index 'a/b' search original

# A damaged summary file: one line, status 2, no crash.
printf 'garbage' >"$KURVO_HOME/indexes/default/store/hash"
fails "corrupt store" search original
fails "update of a corrupt store" update
# A file table whose records are garbage behind an intact header.
kurvo index "$D"
files="$KURVO_HOME/indexes/default/store/files"
size=$(stat -c %s "$files")
head -c $((size - 16)) /dev/zero | tr '\0' '\377' | dd of="$files" bs=1 seek=16 conv=notrunc status=none
fails "damaged file table" search original
fails "update of a damaged file table" update
# Rebuilding repairs it.
succeeds "rebuild over a corrupt store" index "$D"
finds "$D/alpha.txt" "rebuilt index" search changed

finish
