# End to end: archives within archives and a mailbox, searched and shown as archive::member.
source "$(dirname "$0")/cli_test_helpers.sh"
DATA="$(cd "$(dirname "$0")/../data/archives" && pwd)"
export TZ=UTC

D="$WORK/mail and archives"
mkdir -p "$D"
cp "$DATA/docs.zip" "$DATA/mixed.tgz" "$DATA/notes.txt.gz" "$DATA/inbox.mbox" "$D/"
succeeds "index" index "$D"

finds "$D/docs.zip::docs/sub/deep.txt
$D/mixed.tgz::mixed.tar::docs/sub/deep.txt" "members of a zip and of a tar in a tgz" search deep
kurvo search gamma
expect_contains "$D/mixed.tgz::mixed.tar::inner.zip::notes.txt" "a zip in a tar in a tgz"
expect_contains "$D/notes.txt.gz::notes.txt" "a gzip file's inner file"
finds "$D/inbox.mbox::dan@example.org 2004-05-08 09:10:11-1.txt" "a mail attachment" search pelicans

succeeds "show a member three archives deep" show "$D/mixed.tgz::mixed.tar::inner.zip::notes.txt" gamma
expect_contains "inner" "member text"
shows "first plain" "message text" show "$D/inbox.mbox::ann.smith@example.org 2004-05-06 12:34:56-0.txt"
[ -z "$(ls "$KURVO_HOME/indexes/default/store/tmp" | grep -v '^[0-9]*\.txt$')" ] ||
  fail "temporary files left: $(ls "$KURVO_HOME/indexes/default/store/tmp")"

# Mailbox cache files live with the index and survive an update.
succeeds "update" update
shows "first plain" "message text after an update" show "$D/inbox.mbox::ann.smith@example.org 2004-05-06 12:34:56-0.txt"

shows "TAR (.tar)" "help names the archive formats" --help

finish
