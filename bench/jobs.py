"""The jobs of bench/run: inputs, and for each job the commands of ours, of the peers and of the physical limit."""
import base64, os, random, re, shutil, subprocess, sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
BUILD = ROOT + "/build/bench"
BIN = BUILD + "/bin"
DATA = ("/dev/shm" if os.access("/dev/shm", os.W_OK) else BUILD) + "/attalven-bench"
DISK = BUILD + "/disk"
PEERS = ROOT + "/bench/peers"


def corpus(name, *args):
    return lambda path: subprocess.run([sys.executable, ROOT + "/bench/gen_corpus.py", path, *args], check=True,
                                       stdout=subprocess.DEVNULL)


def noise(size, seed, encode=lambda raw: raw):
    def make(path):
        with open(path, "wb") as f:
            f.write(encode(random.Random(seed).randbytes(size)))
    return make


def text(lang, codec):
    def make(path):
        sys.path.insert(0, ROOT + "/bench")
        from gen_corpus import Gen
        unit = "".join(line + "\n" for _ in range(40) for line in Gen(7).text(lang, 40000)).encode(codec)
        with open(path, "wb") as f:
            f.write((unit * (50_000_000 // len(unit) + 1))[:50_000_000].rsplit(b"\n", 1)[0] + b"\n")
    return make


def quoted(source):
    return lambda path: subprocess.run([BIN + "/codec_bench", "qpenc", need(source), path], check=True)


def one_message(source):
    def make(path):
        with open(need(source), "rb") as f, open(path, "wb") as out:
            f.readline()
            shutil.copyfileobj(f, out)
    return make


def first_bytes(source, count):
    def make(path):
        with open(need(source), "rb") as f, open(path, "wb") as out:
            out.write(f.read(count).rsplit(b"\n", 1)[0] + b"\n")
    return make


INPUTS = {
    "list30k.mbox": corpus("list30k", "--mode", "list", "--no-bare-from"),
    "list30k_ko.mbox": corpus("list30k_ko", "--mode", "list", "--no-bare-from", "--langs", "ko,en"),
    "big1g.mbox": corpus("big1g", "--count", "20972", "--mean", "54900", "--seed", "2", "--no-bare-from"),
    "big25.mbox": corpus("big25", "--mode", "big"),
    "big25.eml": one_message("big25.mbox"),
    "raw100": noise(100_000_000, 6),
    "b100": noise(100_000_000, 6, base64.encodebytes),
    "att25.bin": noise(25_000_000, 5), "text25": first_bytes("qp_ko", 25_000_000),
    "qp_en": text("en", "ascii"), "qp_ko": text("ko", "euc_kr"),
    "qp_en.q": quoted("qp_en"), "qp_ko.q": quoted("qp_ko"),
}


def need(name):
    """The path of an input, which is made when it is not there."""
    path = DATA + "/" + name
    if not os.path.exists(path):
        INPUTS[name](path + ".new")
        os.rename(path + ".new", path)
    return path


def write_between(mark, lines):
    """Puts what was measured between the marks of that name in docs/performance.md."""
    path = ROOT + "/docs/performance.md"
    with open(path) as f:
        text = f.read()
    marks = rf"(<!-- {mark} -->\n).*(<!-- end of {mark} -->)"
    text, found = re.subn(marks, lambda m: m[1] + "\n".join(lines) + "\n" + m[2], text, flags=re.S)
    if not found:
        sys.exit(f"docs/performance.md has no place for {mark}")
    with open(path, "w") as f:
        f.write(text)


def index(folder):
    return {"ours": "{bin}/index_bench {%s}" % folder, "libetpan": "{bin}/etpan_scan {%s}" % folder,
            "mutt": "{peers}/mutt_open.sh {%s}" % folder, "GMime": "{bin}/gmime_scan {%s}" % folder,
            "mailutils": "sh -c 'frm -n {%s}; test $? -le 1'" % folder,
            "Python": "{peers}/mailbox_py.py scan {%s}" % folder,
            "limit": "cat {%s}" % folder}


def codec(op, source, *libs):
    rows = {"ours": "{bin}/codec_bench %s {%s} {out}" % (op, source), "limit": "cp {%s} {out}" % source}
    names = {"glib": "GLib", "gmime": "GMime", "evp": "OpenSSL"}
    return rows | {names[lib]: "{bin}/codec_libs %s %s {%s} {out}" % (lib, op, source) for lib in libs}


def on_disk(form):
    return {"ours": "{bin}/rewrite_bench {diskcopy} 10486" + form,
            "cp and sync": "sh -c 'cp {disk.mbox} {diskout} && sync {diskout}'"}


# job: (goal as a ratio to the peer named, that peer, commands)
JOBS = {
    "index 30,000 messages, six languages": (0.13, "libetpan", index("list30k.mbox")),
    "index 30,000 messages, one language": (0.45, "libetpan", index("list30k_ko.mbox")),
    "index 1.07 GB": (0.14, "libetpan", index("big1g.mbox")),
    "structure and attachment of 25 MB": (0.55, "mblaze", {
        "ours": "{bin}/mime_bench {big25.mbox} 1 {out}", "mblaze": "sh -c 'mshow -O {big25.eml} 3 > {out}'",
        "GMime": "{bin}/gmime_mime parse {big25.mbox} {out}", "limit": "cp {big25.mbox} {out}"}),
    "base64 decode 135 MB": (0.5, "GLib", codec("b64dec", "b100", "glib", "gmime")),
    "base64 encode 100 MB": (0.7, "OpenSSL", codec("b64enc", "raw100", "evp", "gmime")),
    "quoted-printable encode 50 MB, ASCII": (0.45, "GMime", codec("qpenc", "qp_en", "gmime")),
    "quoted-printable encode 50 MB, EUC-KR": (0.7, "GMime", codec("qpenc", "qp_ko", "gmime")),
    "quoted-printable decode 51 MB, ASCII": (0.77, "GMime", codec("qpdec", "qp_en.q", "gmime")),
    "quoted-printable decode 128 MB, dense": (0.43, "GMime", codec("qpdec", "qp_ko.q", "gmime")),
    "delete one message of 1.07 GB": (0.33, "libetpan", {
        "ours": "{bin}/rewrite_bench {copy} 10486", "libetpan": "{bin}/etpan_delete {copy} 10486",
        "mutt": "{peers}/mutt_delete.sh {copy} 10486", "Python": "{peers}/mailbox_py.py delete {copy} 10486",
        "limit": "cp {big1g.mbox} {out}"}),
    "the same on disk, replacing form": (1.4, "cp and sync", on_disk("")),
    "the same on disk, in place": (2.5, "cp and sync", on_disk(" in-place")),
    "compose with 25 MB attached": (0.38, "GMime", {
        "ours": "{bin}/compose_bench {att25.bin} {out}", "GMime": "{bin}/gmime_mime compose {att25.bin} {out}",
        "limit": "cp {att25.bin} {out}"}),
    "process start": (1.3, "libc alone", {"ours": "{bin}/start_bench", "libc alone": "{bin}/start_libc"}),
}
# Programs that measure inside one process and print ratios of their own.
SELF = {"conversions": ["charset_bench"], "page text": ["page_text_bench"], "settings": ["settings_bench"],
        "bodies and downloads": ["display_bench"], "delivery of 25 MB": ["deliver_bench", "big25.eml"],
        "text part of 25 MB": ["text_part_bench", "text25"]}
