# End to end: compaction keeps every answer; check finds single-byte damage
# in every storage file, and search refuses damage it meets.
source "$(dirname "$0")/cli_test_helpers.sh"

D="$WORK/docs"
# 300 files of 80 words each over a vocabulary of 400, so that lists are long.
write_docs() {  # round
  mkdir -p "$D"/part{0,1,2,3,4}
  awk -v d="$D" -v r="$1" 'BEGIN {
    for (f = 1; f <= 300; f++) {
      line = "common"
      for (w = 1; w <= 80; w++) line = line " wd" (f * 7 + w * w + r * (f % 3)) % 400
      path = d "/part" (f % 5) "/f" f ".txt"
      print line > path
      close(path)
    }
  }'
}
write_docs 0
printf 'member words inside\n' >"$D/archive.txt" && gzip -n "$D/archive.txt"
mkdir -p "$KURVO_HOME" && printf 'the\nand\nfor\n' >"$KURVO_HOME/skipfile.txt"
succeeds "index" index -q "$D"

# Rounds of changes leave dead entries behind, some of them in archive members.
for round in 1 2 3 4 5 6; do
  write_docs "$round"
  find "$D" -type f -exec touch -d "2020-01-0$round 12:00" {} +
  succeeds "update $round" update -q
done

STORE="$KURVO_HOME/indexes/default/store"
queries=(common wd17 'wd1*' 'wd3 wd250' 'wd5 | wd399' 'common -wd7' member)
answers() { for q in "${queries[@]}"; do "$KURVO_BIN" search "$q"; echo "== $?"; done; }
before="$(answers)"
links_before=$(stat -c %s "$STORE/links")
succeeds "compact" compact
expect_contains "Compacted" "compact summary"
[ "$(answers)" = "$before" ] || fail "compaction changed an answer"
links_after=$(stat -c %s "$STORE/links")
[ "$links_after" -lt "$links_before" ] || fail "links did not shrink: $links_before -> $links_after"
# Without its word order (as an earlier version left an index) a pattern walks every word.
rm -rf "$WORK/plain" && cp -r "$STORE" "$WORK/plain" && rm "$WORK/plain/wordorder"
[ "$("$KURVO_BIN" --store "$WORK/plain" search 'wd1*')" = "$("$KURVO_BIN" search 'wd1*')" ] ||
  fail "a pattern answers differently without the word order"
succeeds "check of a sound index" check
expect_contains "is sound" "check summary"

# Damage rows: file, offset, how ("msb": the most significant byte of the
# 32-bit word there becomes 0x7F; "text": the byte becomes another letter;
# "free": the last byte of the file becomes 1), and the file named in the
# report when it is another one.
if [ "$(od -An -tx1 -N1 "$STORE/hash" | tr -d ' ')" = "51" ]; then msb=3; else msb=0; fi
damage() {  # folder, file, offset, how
  local path="$1/$2" at="$3" byte
  case "$4" in
    msb) at=$((at + msb)); byte='\177' ;;
    text) [ "$(od -An -c -j "$at" -N1 "$path" | tr -d ' ')" = "q" ] && byte='z' || byte='q' ;;
    free) at=$(($(stat -c %s "$path") - 1)); byte='\001' ;;
  esac
  printf "$byte" | dd of="$path" bs=1 seek="$at" conv=notrunc status=none
}
rows=(
  "hash 0 msb"      "hash 12 msb"     "hash 16 msb files"
  "files 0 msb"     "files 4 msb"     "files 16 msb"  "files 20 msb"  "files 36 text"  "files 0 free"
  "words 4 msb"     "words 16 msb"    "words 20 msb"  "words 28 msb"  "words 36 text"  "words 0 free"
  "skipped 4 msb"   "skipped 16 msb"  "skipped 20 text" "skipped 0 free"
  "links 4 msb"     "links 16 msb"    "links 20 msb"
  "wordorder 0 msb" "wordorder 8 msb"  "wordorder 16 msb"
)
for row in "${rows[@]}"; do
  read -r file offset how named <<<"$row"
  copy="$WORK/damaged"
  rm -rf "$copy" && cp -r "$STORE" "$copy"
  damage "$copy" "$file" "$offset" "$how"
  kurvo --store "$copy" check
  expect_status 2 "check after $row"
  case "$ERR" in *"${named:-$file} at byte"*) ;; *) fail "check after $row: no damage named in ${named:-$file}" ;; esac
done

# Search meets a list naming no file, or a path the file table does not find.
for row in "links 20 msb" "files 36 text"; do
  read -r file offset how <<<"$row"
  rm -rf "$copy" && cp -r "$STORE" "$copy"
  damage "$copy" "$file" "$offset" "$how"
  fails_saying "damaged" "search after $row" --store "$copy" search 'common | wd* | member'
done

finish
