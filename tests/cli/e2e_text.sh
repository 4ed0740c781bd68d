# End to end: UTF-8, Latin-1, Mac Roman, extensionless and gzipped text find what grep -rlwi finds.
source "$(dirname "$0")/cli_test_helpers.sh"
export LC_ALL=C.UTF-8

D="$WORK/docs"
mkdir -p "$D"
printf '\xc3\x9cbermensch r\xc3\xa9sum\xc3\xa9 na\xc3\xafve\tcaf\xc3\xa9 internationalization\nit\xe2\x80\x99s done lastword' >"$D/utf8.txt"
printf 'Caf\xe9 R\xe9sum\xe9 NA\xcfVE d\xe9j\xe0\n' >"$D/latin1.txt"
printf 'caf\x8e d\x8ej\x88 macword\n' >"$D/letter.mac"
printf 'root:x:0:0:root:/root:/usr/sbin/nologin\n\xc3\xbcbermensch\n' >"$D/passwd"
printf 'gzipped caf\xc3\xa9 words\n' | gzip >"$D/notes.txt.gz"
printf '\xce\xbb\xcf\x8c\xce\xb3\xce\xbf\xcf\x82 caf\xc3\xa9\n' >"$D/greek.txt"
printf 'caf\xc3\xa9 nologin\0\1\2binary\n' >"$D/blob"
{ head -c $((65535 - 5)) /dev/zero | tr '\0' ' '; printf 'boundaryword spans\n'; } >"$D/boundary.txt"

# The same texts in UTF-8, where grep can read them; gzipped files as their
# one member, binary files left out as grep -I leaves them.
V="$WORK/view"
mkdir -p "$V"
iconv -f UTF-8 -t UTF-8 <"$D/utf8.txt" >"$V/utf8.txt"
iconv -f LATIN1 -t UTF-8 <"$D/latin1.txt" >"$V/latin1.txt"
iconv -f MACINTOSH -t UTF-8 <"$D/letter.mac" >"$V/letter.mac"
cp "$D/passwd" "$D/greek.txt" "$D/boundary.txt" "$V/"
gzip -dc "$D/notes.txt.gz" >"$V/notes.txt.gz::notes.txt"

succeeds "index" index "$D" --include '*.mac=macroman'
expect_contains "1 file holds characters outside Latin-1" "summary counts the Greek file"

for word in café CAFÉ résumé naïve Übermensch déjà nologin lastword boundaryword gzipped macword \
  internationalization done; do
  expected="$(cd "$V" && grep -rlwiI -- "$word" . | sed "s|^\./|$D/|" | sort)"
  kurvo search "$word"
  actual="$(printf '%s\n' "$OUT" | sort)"
  [ "$actual" = "$expected" ] || fail "search $word: expected
$expected"
done

kurvo search λόγος
expect_status 2 "a Greek word cannot be searched"
case "$ERR" in *"characters the index cannot hold"*) ;; *) fail "the Greek query is explained" ;; esac

kurvo show "$D/utf8.txt"
printf '%s\n' "$OUT" | iconv -f UTF-8 -t UTF-8 >/dev/null 2>&1 || fail "show prints valid UTF-8"
[ "$OUT" = "$(cat "$D/utf8.txt")" ] || fail "show gives a UTF-8 file back as it is"
kurvo show "$D/latin1.txt"
[ "$OUT" = "$(cat "$V/latin1.txt")" ] || fail "show gives a Latin-1 file as UTF-8"
LC_ALL=C kurvo show "$D/latin1.txt"
[ "$OUT" = "$(cat "$D/latin1.txt")" ] || fail "outside a UTF-8 locale show gives the bytes as they are"
shows "boundaryword spans" "outline across a 64 KB boundary" show --outline "$D/boundary.txt" boundaryword
finds "gzipped café words" "a gzip file shows the file inside" show "$D/notes.txt.gz"
finds "café	5" "words are printed in UTF-8" words 'caf*'

finish
