# End to end: HTML, RTF, PDF and code-page documents, and external converters with hostile file names.
source "$(dirname "$0")/cli_test_helpers.sh"
DATA="$(cd "$(dirname "$0")/../data" && pwd)"

D="$WORK/docs"
mkdir -p "$D"
cp "$DATA/html/cafe.html" "$DATA/rtf/garden-libreoffice.rtf" "$D/"
cp "$DATA/pdf/report-pdflatex.pdf" "$DATA/pdf/invoice-ps2pdf.pdf" "$DATA/pdf/bomb.pdf" "$D/"
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
succeeds "index" index "$D" --converter-timeout 2 --include '*.up=lower' '*.slow=slow' '*.mac=macroman'
[ $(($(date +%s) - started)) -lt 20 ] || fail "a stuck converter held up the run"
case "$ERR" in *'the converter "broken" in externanalyzers.txt is left out'*) ;; *) fail "rejected converter not named" ;; esac
[ ! -e "$D/HACKED" ] && [ ! -e HACKED ] && [ ! -e "$KURVO_HOME/HACKED" ] || fail "a file name ran a command"

finds "$D/cafe.html" "HTML words" search 'tartine croissant'
finds "$D/garden-libreoffice.rtf" "RTF words" search 'pumpkin zucchini'
finds "$D/\$(touch HACKED).up" "converted file found under its own name" search loudly
finds "$D/a;touch HACKED.up" "second converted file" search whisper
finds "" "the stuck converter's file has no words" search converted
shows "$D/letter.mac" "Mac Roman words" search 'caf*'

finds "$D/garden-libreoffice.rtf
$D/report-pdflatex.pdf" "PDF words beside RTF words" search 'zucchini'
finds "$D/invoice-ps2pdf.pdf" "the second page of a PDF" search 'lighthouse'
finds "$D/bomb.pdf" "the start of a stream cut at its bound" search bombshell
finds "" "what lies past a stream's bound is left out" search farewell
case "$ERR" in *bomb.pdf*) fail "a cut PDF is only said with --verbose" ;; esac
shows "Second page: lighthouse maintenance" "PDF display" show "$D/invoice-ps2pdf.pdf" lighthouse
kurvo index "$D" --verbose --converter-timeout 2 --include '*.up=lower' '*.slow=slow' '*.mac=macroman'
case "$ERR" in *"$D/bomb.pdf inflates to more than kurvo reads from one PDF"*) ;; *) fail "--verbose names the cut PDF" ;; esac

shows "shout loudly" "converted display" show "$D/\$(touch HACKED).up"
[ ! -e "$D/HACKED" ] && [ ! -e HACKED ] || fail "showing ran a command"

shows "externanalyzers.txt" "converter help" help converters

finish
