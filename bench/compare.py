#!/usr/bin/env python3
"""Times kurvo against an SQLite FTS5 index of the same files, in one run.

Makes a deterministic corpus (Zipf-distributed words over a fixed vocabulary
with some Latin-1 words, files from 200 B to 200 KB, folders of 20), then in
alternating rounds: full builds of both indexes, queries for a frequent word,
a rare word and a prefix printing every matching path (as whole `kurvo search`
and `sqlite3` processes, and in process: a host through kurvo.h against
Python's sqlite3 module on an open connection), and an update after 1% of the
files changed. The
FTS5 index is contentless with detail=none plus a table of paths, built in one
transaction: the smallest FTS5 index that answers the same questions.
Prints medians and ratios (FTS5 time / kurvo time: above 1, kurvo is faster).
"""
import argparse
import os
import random
import shutil
import sqlite3
import statistics
import subprocess
import sys
import tempfile
import time

VOCABULARY = 60000


def make_vocabulary(rng):
    letters = "abcdefghijklmnopqrstuvwxyz"
    accented = "\xe9\xe8\xe0\xfc\xf6\xe4\xe7\xf1"
    words = set()
    while len(words) < VOCABULARY:
        length = min(3 + int(rng.expovariate(0.35)), 14)
        word = "".join(rng.choice(letters) for _ in range(length))
        if rng.random() < 0.05:
            at = rng.randrange(len(word))
            word = word[:at] + rng.choice(accented) + word[at + 1:]
        words.add(word)
    return sorted(words)


def zipf_weights(n):
    return [1.0 / (rank + 1) for rank in range(n)]


def write_corpus(root, megabytes, seed):
    rng = random.Random(seed)
    vocab = make_vocabulary(rng)
    weights = zipf_weights(len(vocab))
    total, index, files = 0, 0, []
    while total < megabytes * 1024 * 1024:
        size = int(min(200 * 1024, max(200, rng.lognormvariate(8.5, 1.3))))
        words = rng.choices(vocab, weights, k=max(1, size // 7))
        lines = [" ".join(words[i:i + 12]) for i in range(0, len(words), 12)]
        folder = os.path.join(root, "d%03d" % (index // 20))
        os.makedirs(folder, exist_ok=True)
        path = os.path.join(folder, "f%05d.txt" % index)
        with open(path, "w", encoding="latin-1") as out:
            out.write("\n".join(lines) + "\n")
        files.append(path)
        total += size
        index += 1
    return vocab, files


def write_tiny_tree(root, count):
    files = []
    for i in range(count):
        folder = os.path.join(root, "d%04d" % (i // 20))
        if i % 20 == 0:
            os.makedirs(folder)
        path = os.path.join(folder, "f%d.txt" % i)
        with open(path, "w") as out:
            out.write("common word%d tiny\n" % i)
        files.append(path)
    return files


def timed(fn):
    start = time.perf_counter()
    fn()
    return time.perf_counter() - start


def run(args, **kw):
    return subprocess.run(args, check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, **kw)


def read_text(path):
    with open(path, encoding="latin-1") as f:
        return f.read()


def build_fts(db_path, files):
    if os.path.exists(db_path):
        os.remove(db_path)
    con = sqlite3.connect(db_path)
    con.execute("create table files(id integer primary key, path text)")
    con.execute("create virtual table body using fts5(text, content='', detail=none)")
    with con:
        for i, path in enumerate(files, 1):
            con.execute("insert into files values(?, ?)", (i, path))
            con.execute("insert into body(rowid, text) values(?, ?)", (i, read_text(path)))
    con.close()


def update_fts(db_path, changed, old_texts):
    con = sqlite3.connect(db_path)
    with con:
        for rowid, path in changed:
            con.execute("insert into body(body, rowid, text) values('delete', ?, ?)", (rowid, old_texts[rowid]))
            con.execute("insert into body(rowid, text) values(?, ?)", (rowid, read_text(path)))
    con.close()


def fts_query(term):
    return ("select path from files where id in (select rowid from body where body match '%s')" % term)


def fts_in_process(db_path, term, rounds):
    """Median microseconds of one query with every path fetched, on a connection opened once."""
    con = sqlite3.connect(db_path)
    micros = []
    for _ in range(rounds):
        start = time.perf_counter()
        con.execute(fts_query(term)).fetchall()
        micros.append((time.perf_counter() - start) * 1e6)
    con.close()
    return statistics.median(micros)


def kurvo_in_process(host, store, term, rounds):
    out = run([host, store, term, str(rounds)]).stdout.decode()
    return float(out.split("median ")[1].split()[0])


def median_ms(values):
    return statistics.median(values) * 1000


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--kurvo", default=os.path.join(os.path.dirname(__file__), "..", "build", "bin", "kurvo"))
    parser.add_argument("--megabytes", type=int, default=30)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--tiny", type=int, default=10000, help="files in the tree of tiny files")
    parser.add_argument("--host", help="the in-process query host (default: kurvo_query_host beside kurvo, built "
                                       "with -DKURVO_BUILD_BENCH=ON); skipped when missing")
    args = parser.parse_args()
    kurvo = os.path.abspath(args.kurvo)
    host = args.host or os.path.join(os.path.dirname(kurvo), "kurvo_query_host")
    if not os.access(kurvo, os.X_OK):
        sys.exit("compare: build kurvo first (scripts/build.sh)")

    work = tempfile.mkdtemp(prefix="kurvo-compare-")
    try:
        corpus = os.path.join(work, "corpus")
        vocab, files = write_corpus(corpus, args.megabytes, args.seed)
        store = os.path.join(work, "a", "b", "c", "store")
        db = os.path.join(work, "fts.db")
        env = dict(os.environ, KURVO_HOME=os.path.join(work, "home"))
        kurvo_cmd = [kurvo, "--store", store, "-q"]
        frequent, rare, prefix = vocab[0], vocab[len(vocab) // 2], vocab[1][:3]
        queries = {"frequent": (frequent, frequent), "rare": (rare, rare), "prefix": (prefix + "*", prefix + "*")}
        print("corpus: %d files, %.1f MB; frequent %r, rare %r, prefix %r*" %
              (len(files), sum(os.path.getsize(f) for f in files) / 1e6, frequent, rare, prefix))

        times = {}

        def add(name, seconds):
            times.setdefault(name, []).append(seconds)

        for _ in range(args.rounds):
            add("build kurvo", timed(lambda: run(kurvo_cmd + ["index", corpus], env=env)))
            add("build fts5", timed(lambda: build_fts(db, files)))
            for name, (kq, fq) in queries.items():
                add(name + " kurvo", timed(lambda: run(kurvo_cmd + ["search", kq], env=env)))
                add(name + " fts5", timed(lambda: run(["sqlite3", db, fts_query(fq)])))
        # 1% of the files change (the same ones for both), then both update.
        rng = random.Random(args.seed + 1)
        picked = rng.sample(range(len(files)), max(1, len(files) // 100))
        old_texts = {i + 1: read_text(files[i]) for i in picked}
        time.sleep(1.1)  # a new modification second
        for i in picked:
            with open(files[i], "a", encoding="latin-1") as out:
                out.write("changedword%d\n" % i)
        add("update kurvo", timed(lambda: run(kurvo_cmd + ["update"], env=env)))
        add("update fts5", timed(lambda: update_fts(db, [(i + 1, files[i]) for i in picked], old_texts)))
        # Files changed in the second an update started are read again by the
        # next one; the no-change rounds begin once that second is past.
        time.sleep(2.1)
        # The earlier runs' writes go to disk first: the kernel writing them
        # back in the middle of a round would time its own work, not the check.
        os.sync()
        run(kurvo_cmd + ["update"], env=env)
        for _ in range(args.rounds):
            add("no-change update kurvo", timed(lambda: run(kurvo_cmd + ["update"], env=env)))
        print("no-change rounds:", " ".join("%.1f" % (t * 1000) for t in times["no-change update kurvo"]))
        in_process = {}
        if os.access(host, os.X_OK):
            for name, (kq, fq) in queries.items():
                in_process[name] = (kurvo_in_process(host, store, kq, 50), fts_in_process(db, fq, 50))
        tiny = write_tiny_tree(os.path.join(work, "tiny"), args.tiny)
        tiny_store = os.path.join(work, "t", "b", "c", "store")
        tiny_db = os.path.join(work, "tiny.db")
        for _ in range(args.rounds):
            add("tiny files kurvo", timed(lambda: run([kurvo, "--store", tiny_store, "-q", "index",
                                                       os.path.join(work, "tiny")], env=env)))
            add("tiny files fts5", timed(lambda: build_fts(tiny_db, tiny)))

        print("%-26s %10s %10s %8s" % ("", "kurvo ms", "fts5 ms", "ratio"))
        for name in ["build", "frequent", "rare", "prefix", "update", "tiny files"]:
            k, f = median_ms(times[name + " kurvo"]), median_ms(times[name + " fts5"])
            print("%-26s %10.1f %10.1f %8.2f" % (name, k, f, f / k))
        for name, (k, f) in in_process.items():
            print("%-26s %10.3f %10.3f %8.2f" % (name + " in process", k / 1000, f / 1000, f / k))
        nochange = median_ms(times["no-change update kurvo"])
        print("%-26s %10.1f %10s %8s" % ("no-change update", nochange, "", ""))
        print("no-change update / full build: %.1f%%" % (100 * nochange / median_ms(times["build kurvo"])))
        sizes = sum(os.path.getsize(os.path.join(store, n)) for n in ("hash", "files", "words", "skipped", "links", "wordorder"))
        print("index sizes: kurvo %.1f MB, fts5 %.1f MB" % (sizes / 1e6, os.path.getsize(db) / 1e6))
    finally:
        shutil.rmtree(work, ignore_errors=True)


if __name__ == "__main__":
    main()
