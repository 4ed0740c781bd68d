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

kurvo index "$D"
expect_status 0 "index"
expect_contains "Indexed" "index summary"

kurvo search fox
expect_status 0 "single word"
expect_out "$D/many.txt
$D/alpha.txt" "ranking: three occurrences before one"

kurvo search quick brown
expect_out "$D/alpha.txt" "AND of words side by side"

kurvo search 'fox | panda'
expect_out "$D/many.txt
$D/alpha.txt
$D/beta.txt
$D/gamma.md" "OR, best first, ties by path"

kurvo search 'panda -red'
expect_out "$D/gamma.md" "exclusion with -"
kurvo search -- '-red panda'
expect_out "$D/gamma.md" "a query may start with -"
kurvo search 'leak-found'
expect_out "$D/sub/delta.txt" "a compound is its words in sequence"

kurvo search 'fox*'
expect_out "$D/many.txt
$D/alpha.txt
$D/gamma.md" "wildcard *"
kurvo search 'qu?ck'
expect_out "$D/gamma.md
$D/alpha.txt" "wildcard ?, two occurrences first"

kurvo search '(brown | thinking) quick'
expect_out "$D/gamma.md
$D/alpha.txt" "parentheses"

kurvo search 'memory <3 leak'
expect_out "$D/sub/delta.txt" "proximity"

kurvo search kangaroo
expect_out "$D/README" "extension-less README read as text"
kurvo search secretword
expect_status 1 "excluded .git folder"
kurvo search binaryword
expect_status 1 "files that are not text have no words"
expect_out "" "nothing found prints nothing"

kurvo search --limit 1 fox
expect_out "$D/many.txt" "--limit"

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
kurvo show "$D/nothere.txt"
expect_status 2 "show of a file not in the index"

kurvo words 'fox*'
expect_out "fox	2
foxes	1" "words with counts"

kurvo stats
expect_contains "folder:         $D" "stats folders"
expect_contains "files:" "stats files"

kurvo --help
expect_contains "search" "--help lists commands"
"$KURVO_BIN" --help-man "$WORK/kurvo.1" && head -1 "$WORK/kurvo.1" | grep -q '^\.TH KURVO' ||
  fail "manual page"

# A second named index does not disturb the first.
put "$WORK/other/x.txt" "otherworldly"
kurvo --index second index "$WORK/other"
kurvo --index second search otherworldly
expect_out "$WORK/other/x.txt" "named index"
kurvo search otherworldly
expect_status 1 "default index untouched"

# Options given to index are kept in the settings and used again on rebuilds.
kurvo --index opts index --include '*.bin' --exclude '*/sub' --min-word 2 "$D"
kurvo --index opts search binaryword
expect_out "$D/notes.bin" "--include reads more files"
kurvo --index opts search memory
expect_status 1 "--exclude keeps a folder out"
kurvo --index opts index
kurvo --index opts search binaryword
expect_out "$D/notes.bin" "rebuild keeps the options"
kurvo --index opts index --default-patterns
kurvo --index opts search binaryword
expect_status 1 "--default-patterns forgets them"

# --store names a storage folder directly.
kurvo --store "$WORK/a/b/direct" index "$WORK/other"
kurvo --store "$WORK/a/b/direct" search otherworldly
expect_out "$WORK/other/x.txt" "--store search"

finish
