# End to end: a file of 3 GiB (sparse, so it costs no disk) is recorded with
# its size and words, and an update keeps it. 32-bit builds need 64-bit file
# offsets for this: without them lstat fails on the file and it is left out.
source "$(dirname "$0")/cli_test_helpers.sh"

D="$WORK/big"
put "$D/huge.txt" "elephantine"
truncate -s 3G "$D/huge.txt" || { echo "truncate failed: no sparse files here" >&2; exit 1; }
succeeds "index" index "$D"
kurvo search --json elephantine
expect_contains "\"path\": \"$D/huge.txt\"" "large file found"
expect_contains '"size": 3221225472' "large file size"

sleep 1
put "$D/small.txt" "mouse"
succeeds "update" update
finds "$D/huge.txt" "large file kept by an update" search elephantine

finish
