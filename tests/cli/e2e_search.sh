# End to end: build an index of a generated folder and query it every way.
source "$(dirname "$0")/cli_test_helpers.sh"

D="$WORK/docs"
put "$D/alpha.txt" "the quick brown fox
jumps over the lazy dog"
put "$D/beta.txt" "brown bear and a red panda"
put "$D/gamma.md" "quick thinking saves the panda; foxes are quick"
put "$D/many.txt" "fox fox fox and dog"
put "$D/sub/delta.txt" "memory leak found after a long search for the leak"
put "$D/sub/epsilon.txt" "memory was fine but much later we saw a leak"
put "$D/README" "readme words: kangaroo"
printf 'binaryword\0\1\2\n' >"$D/notes.bin"
put "$D/.git/config" "secretword"

succeeds "index" index "$D"
expect_contains "Indexed" "index summary"

# Each query and the files it finds, best first: more occurrences first, ties
# by path ("-": none). A compound is its words in sequence; README has no
# extension and is read as text; .git is left out; so are files that are not text.
while IFS=';' read -r query files; do
  expected=""
  for f in $files; do [ "$f" = - ] || expected+="${expected:+$'\n'}$D/$f"; done
  finds "$expected" "search $query" search -- "$query"
done <<'QUERIES'
fox;many.txt alpha.txt
quick brown;alpha.txt
fox | panda;many.txt alpha.txt beta.txt gamma.md
panda -red;gamma.md
-red panda;gamma.md
leak-found;sub/delta.txt
fox*;many.txt alpha.txt gamma.md
qu?ck;gamma.md alpha.txt
(brown | thinking) quick;gamma.md alpha.txt
memory <3 leak;sub/delta.txt
kangaroo;README
secretword;-
binaryword;-
QUERIES

finds "$D/many.txt" "--limit" search --limit 1 fox

kurvo search --json fox
expect_contains "\"total\": 2" "--json total"
expect_contains "\"path\": \"$D/many.txt\"" "--json path"
expect_contains "\"score\": 3" "--json score"

kurvo search --outline fox
expect_contains "$D/alpha.txt" "--outline path"
expect_contains "    the quick brown fox" "--outline line"
expect_lacks "lazy" "--outline leaves out lines without hits"

kurvo show "$D/alpha.txt"
expect_contains "quick brown fox" "show text"
expect_contains "lazy" "show whole text"
kurvo show --outline "$D/alpha.txt" fox
expect_contains "quick brown fox" "show --outline keeps the hit line"
expect_lacks "lazy" "show --outline drops other lines"
(cd "$D" && "$KURVO_BIN" show alpha.txt >"$WORK/rel" 2>&1)
grep -q "quick brown fox" "$WORK/rel" || fail "show with a relative path"
fails "show of a file not in the index" show "$D/nothere.txt"

finds "fox	2
foxes	1" "words with counts" words 'fox*'

kurvo stats
expect_contains "folder:         $D" "stats folders"
expect_contains "files:" "stats files"

shows "search" "--help lists commands" --help
"$KURVO_BIN" --help-man "$WORK/kurvo.1" && head -1 "$WORK/kurvo.1" | grep -q '^\.TH KURVO' ||
  fail "manual page"

# A second named index does not disturb the first.
put "$WORK/other/x.txt" "otherworldly"
kurvo --index second index "$WORK/other"
finds "$WORK/other/x.txt" "named index" --index second search otherworldly
finds "" "default index untouched" search otherworldly

# Options given to index are kept in the settings and used again on rebuilds.
kurvo --index opts index --include '*.bin' --exclude '*/sub' --min-word 2 "$D"
finds "$D/notes.bin" "--include reads more files" --index opts search binaryword
finds "" "--exclude keeps a folder out" --index opts search memory
kurvo --index opts index
finds "$D/notes.bin" "rebuild keeps the options" --index opts search binaryword
kurvo --index opts index --default-patterns
finds "" "--default-patterns forgets them" --index opts search binaryword

# --store names a storage folder directly.
kurvo --store "$WORK/a/b/direct" index "$WORK/other"
finds "$WORK/other/x.txt" "--store search" --store "$WORK/a/b/direct" search otherworldly

finish
