# End to end: HTML, RTF and code-page documents, and external converters with hostile file names.
source "$(dirname "$0")/cli_test_helpers.sh"
DATA="$(cd "$(dirname "$0")/../data" && pwd)"

D="$WORK/docs"
mkdir -p "$D"
cp "$DATA/html/cafe.html" "$DATA/rtf/garden-libreoffice.rtf" "$D/"
cp "$DATA/text/letter-macroman.txt" "$D/letter.mac"
printf 'shout LOUDLY please\n' >"$D/\$(touch HACKED).up"
printf 'QUIET whisper\n' >"$D/a;touch HACKED.up"
printf 'never converted\n' >"$D/stuck.slow"
mkdir -p "$KURVO_HOME"
cat >"$KURVO_HOME/externanalyzers.txt" <<'LIST'
# lower-cases its input
lower
txt
tr A-Z a-z < %i > %o

slow
txt
sleep 30; cp %i %o

broken
txt
cat %i
LIST

started=$(date +%s)
kurvo index "$D" --converter-timeout 2 --include '*.up=lower' '*.slow=slow' '*.mac=macroman'
expect_status 0 "index"
[ $(($(date +%s) - started)) -lt 20 ] || fail "a stuck converter held up the run"
case "$ERR" in *'the converter "broken" in externanalyzers.txt is left out'*) ;; *) fail "rejected converter not named" ;; esac
[ ! -e "$D/HACKED" ] && [ ! -e HACKED ] && [ ! -e "$KURVO_HOME/HACKED" ] || fail "a file name ran a command"

kurvo search 'tartine croissant'
expect_out "$D/cafe.html" "HTML words"
kurvo search 'pumpkin zucchini'
expect_out "$D/garden-libreoffice.rtf" "RTF words"
kurvo search loudly
expect_out "$D/\$(touch HACKED).up" "converted file found under its own name"
kurvo search whisper
expect_out "$D/a;touch HACKED.up" "second converted file"
kurvo search converted
expect_status 1 "the stuck converter's file has no words"
kurvo search 'caf*'
expect_contains "$D/letter.mac" "Mac Roman words"

kurvo show "$D/cafe.html" croissant
expect_contains "croissant" "HTML display"
expect_lacks "secretvariable" "scripts are not shown"
kurvo show "$D/garden-libreoffice.rtf"
expect_contains "au lait for breakfast" "RTF display"
expect_lacks "Liberation" "font table not shown"
kurvo show "$D/\$(touch HACKED).up"
expect_contains "shout loudly" "converted display"
[ ! -e "$D/HACKED" ] && [ ! -e HACKED ] || fail "showing ran a command"

kurvo help converters
expect_contains "externanalyzers.txt" "converter help"

finish
