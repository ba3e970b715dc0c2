"""A site for the programs of a build: made anew in BUILD/site, where they look for it, with users who can log in."""
import base64, fcntl, glob, hashlib, hmac, os, re, shutil, subprocess, sys, time

sys.path.append(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


def add_pages(build, site):
    """The web mail's templates and its rows of the message tables."""
    shutil.copytree(f"{build}/host/template", f"{site}/doc/template", dirs_exist_ok=True)
    for path in glob.glob(f"{build}/host/conf/*"):
        with open(path, "rb") as rows, open(f"{site}/conf/{os.path.basename(path)}", "ab") as table:
            table.write(rows.read())


def run(build, site, program, *args, text=""):
    """What a program of the build prints."""
    return subprocess.run([f"{build}/bin/{program}", *args], env={**os.environ, "ATTALVEN_SITE": site}, input=text, check=True,
                          stdout=subprocess.PIPE, text=True).stdout


def make(build, *users):
    """The site's folder and its key. Ends the test when the programs read another site; waits for other tests of this one."""
    site = f"{build}/site"
    with open(f"{build}/CMakeCache.txt") as cache:
        if f"ATTALVEN_SYSCONFDIR:STRING={site}/conf\n" not in cache.read():
            print(f"SKIPPED: the programs of this build do not read {site}/conf (-DATTALVEN_SYSCONFDIR)")
            sys.exit(77)
    make.lock = open(f"{build}/serve.lock", "w")  # of host/serve too
    fcntl.flock(make.lock, fcntl.LOCK_EX)
    shutil.rmtree(site, ignore_errors=True)
    run(build, site, "attalven", "site", "init", site, "--host", "mail.localhost", "--admin", "sysop")
    add_pages(build, site)
    for user in users:
        run(build, site, "attalven", "user", "add", user)
        run(build, site, "attalven-password", user, text="a password\n")
    with open(f"{site}/conf/attalven.conf") as f:
        return site, re.search(r"ADMIN_KEY *= *(\S+)", f.read())[1]


def code(user, key, seconds=9 * 3600):
    """An authentication code, or with the key of its forms a token, as if made in an hour: later than the
    user's password."""
    pack = lambda b: base64.urlsafe_b64encode(b).decode().rstrip("=")
    text = f"{pack(user.encode())}.{int(time.time()) + seconds}"
    return f"{text}.{pack(hmac.digest(key.encode(), f'attalven-auth-code-1:{text}'.encode(), hashlib.sha256))}"
