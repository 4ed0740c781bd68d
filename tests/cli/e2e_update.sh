# End to end: updates after files change, appear and vanish; adding folders.
source "$(dirname "$0")/cli_test_helpers.sh"

D="$WORK/docs"
put "$D/alpha.txt" "the quick brown fox"
put "$D/beta.txt" "brown bear"
put "$D/sub/gamma.txt" "quiet garden"
succeeds "index" index "$D"

# Changes are detected by time stamps in whole seconds.
sleep 1
put "$D/alpha.txt" "the quick brown wolf"
rm "$D/beta.txt"
put "$D/sub/new.txt" "zebra crossing"
put "$D/newdir/deep.txt" "platypus"

succeeds "update" update
expect_contains "Updated" "update summary"
finds "$D/alpha.txt" "changed file has its new words" search wolf
finds "" "changed file lost its old words" search fox
finds "" "deleted file is gone" search bear
finds "$D/sub/new.txt" "new file in an old folder" search zebra
finds "$D/newdir/deep.txt" "file in a new folder" search platypus
finds "$D/alpha.txt" "re-indexed file listed once" search brown

# --add joins a folder without a rebuild.
E="$WORK/extra"
put "$E/one.txt" "marmalade"
kurvo index --add "$E"
finds "$E/one.txt" "added folder searchable" search marmalade
shows "folder:         $E" "stats lists the added folder" stats
succeeds "adding a covered folder again" index --add "$E/"
finds "$E/one.txt" "no duplicates after adding twice" search marmalade

# A full index without folders rebuilds the recorded ones.
kurvo index
finds "$D/alpha.txt
$E/one.txt" "rebuild covers all folders" search 'marmalade | wolf'

# Updates that find nothing changed read nothing and leave the store as it is.
sleep 1
kurvo update -q
sizes="$(wc -c "$KURVO_HOME"/indexes/default/store/{files,links,words})"
for round in 1 2; do
  shows "0 files read" "no-change update $round reads nothing" update
done
[ "$(wc -c "$KURVO_HOME"/indexes/default/store/{files,links,words})" = "$sizes" ] || fail "no-change updates grew the store"

finish
