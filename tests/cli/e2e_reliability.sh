# End to end: one writer at a time, kills at any instant, signals, and private files.
source "$(dirname "$0")/cli_test_helpers.sh"

A="$WORK/a"
B="$WORK/b"
mkdir -p "$A"/d{0..19} "$B"/d{0..19}
for i in $(seq 1 400); do printf 'alpha common word%s\n' "$i" >"$A/d$((i % 20))/f$i.txt"; done
# Enough files that a run lasts long enough to be killed in the middle.
for i in $(seq 1 4000); do printf 'bravo common item%s %s\n' "$i" "$A" >"$B/d$((i % 20))/g$i.txt"; done

umask 022
succeeds "first index" index "$A"
bad_modes="$(find "$KURVO_HOME" \( -type d ! -perm 700 \) -o \( -type f ! -perm 600 \))"
[ -z "$bad_modes" ] || fail "everything under the kurvo home is private; not: $bad_modes"

# A second writer waits, or with --no-wait fails naming the first.
exec 9>"$KURVO_HOME/indexes/default/lock"
flock 9
fails_saying "is writing this index" "--no-wait while another run writes" --no-wait update
( sleep 1; flock -u 9 ) &
succeeds "a second writer waits its turn" update
case "$ERR" in *"waiting for"*) ;; *) fail "the wait is said" ;; esac
exec 9>&-
wait

# Two updates at once give what a clean rebuild gives.
for i in $(seq 1 60); do put "$A/d1/new$i.txt" "alpha fresh$i common"; done
rm -f "$A"/d2/*.txt
kurvo update & kurvo update & wait
kurvo --index clean index "$A"
for word in alpha common fresh17 word2 word3; do
  kurvo search "$word"; got="$OUT"
  kurvo --index clean search "$word"
  [ "$got" = "$OUT" ] || fail "concurrent updates differ from a rebuild for $word"
done

# A kill at any instant leaves the old index or the new one, whole: B is
# searchable exactly when stats lists it.
whole() {
  kurvo search bravo; local found=$STATUS
  kurvo stats; local listed=1
  case "$OUT" in *"folder:         $B"*) listed=0 ;; esac
  [ "$found" = "$listed" ] && { kurvo search alpha; [ "$STATUS" = 0 ]; }
}
for round in $(seq 1 20); do
  kurvo index "$A" -q
  "$KURVO_BIN" index --add "$B" -q 2>/dev/null &
  victim=$!
  sleep "0.$(printf '%03d' $(( (round * 7) % 80 )))"
  kill -9 "$victim" 2>/dev/null
  wait "$victim" 2>/dev/null
  whole || fail "round $round: the index is not whole after kill -9"
done

# SIGTERM ends a run like Ctrl-C: the old index stays and nothing is left behind.
kurvo index "$A" -q
"$KURVO_BIN" index "$A" "$B" -q 2>/dev/null &
victim=$!
# Once the run's work folder exists the run is under way (and its handlers
# are in place, however slowly a sanitizer build starts).
for _ in $(seq 1 400); do
  [ -e "$KURVO_HOME/indexes/default/store.new" ] || ! kill -0 "$victim" 2>/dev/null && break
  sleep 0.02
done
kill -TERM "$victim"
wait "$victim"
status=$?
[ "$status" = 130 ] || [ "$status" = 0 ] || fail "SIGTERM: exit status $status"
[ ! -e "$KURVO_HOME/indexes/default/store.new" ] || fail "SIGTERM left the work folder"
whole || fail "the index is not whole after SIGTERM"

# A top folder out of reach is kept, and read again when it is back.
C="$WORK/c"
put "$C/keep.txt" "charlie kept"
kurvo index "$A" "$C" -q
mv "$C" "$WORK/c-away"
succeeds "update with a folder out of reach" update
case "$ERR" in *"the folder $C cannot be reached; its 1 files are kept"*) ;; *) fail "the missing folder is said" ;; esac
finds "$C/keep.txt" "the missing folder's files stay searchable" search charlie
mv "$WORK/c-away" "$C"
put "$C/back.txt" "charlie returned"
kurvo update -q
finds "$C/back.txt
$C/keep.txt" "the returned folder is read again" search charlie
kurvo index --forget "$C" -q
finds "" "--forget drops a folder" search charlie

# A full disk ends the run with a message; the old index stays, nothing is left behind.
T="$WORK/tiny"
mkdir -p "$T" "$WORK/many"
if [ "$(id -u)" = 0 ] && mount -t tmpfs -o size=3m tmpfs "$T" 2>/dev/null; then
  head -c 3000000 /dev/urandom | base64 -w 60 >"$WORK/many/words.txt"
  KURVO_HOME="$T/home" kurvo index "$A" -q
  KURVO_HOME="$T/home" fails_saying "free; the previous index is unchanged" "a run that fills the disk" index "$WORK/many"
  KURVO_HOME="$T/home" kurvo search alpha
  expect_status 0 "the previous index after a full disk"
  [ -z "$(ls -d "$T"/home/indexes/default/store.* 2>/dev/null)" ] || fail "a full disk left the work folder"
  umount "$T"
else
  echo "note: full-disk check skipped (needs root and tmpfs)" >&2
fi

# What the walk leaves out is counted, and listed with --verbose.
L="$WORK/long"
mkdir -p "$L"
( cd "$L" && for i in $(seq 1 20); do d=$(printf 'd%.0s' $(seq 1 250)); mkdir "$d" && cd "$d" || exit 1; done; echo deep >deep.txt )
head -c 3000 /dev/zero | tr '\0' 'a' >"$L/big.txt"
shows "Left out: 1 files read only up to --max-file-read, 1 paths too long for the system" "skips counted by reason" \
  --index skips index "$L" --max-file-read 1024 --verbose
case "$ERR" in *"files read only up to --max-file-read: $L/big.txt"*) ;; *) fail "--verbose lists what was cut" ;; esac

# A file put back older than the last run, and a FIFO in a changed folder.
put "$WORK/old.txt" "vintage words"
touch -d '2001-01-01' "$WORK/old.txt"
mkfifo "$A/d3/pipe"
sleep 1
cp -p "$WORK/old.txt" "$A/d3/f3.txt"
timeout 60 "$KURVO_BIN" update -q
[ $? = 0 ] || fail "update with a FIFO in a changed folder"
finds "$A/d3/f3.txt" "a file replaced by an older copy is read again" search vintage

finish
