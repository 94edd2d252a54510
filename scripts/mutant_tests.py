"""The copy of the tree that scripts/mutants works in, its builds, its tests, and what was measured
of them: which passes without a fault, how long it takes, and which product lines it reaches.
"""
import collections
import contextlib
import hashlib
import itertools
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutants"
TREE = WORK / "tree"
PREFIX = TREE / "build" / "wine" / "prefix"
FOLDERS = "app|autostart|console|core|platform|storage|system|ui|update|res"
PRODUCT = re.compile(rf"(?:{FOLDERS})/.*\.(?:cpp|h|rc)$")
WINDOWS = ["-DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64.cmake", "-DCMAKE_BUILD_TYPE=MinSizeRel",
           "-DVANTORA_MAKENSIS=OFF"]
COVERAGE = "--coverage -fprofile-exclude-files=/usr/.*"
BUILDS = {
    "host": ["-DCMAKE_CXX_FLAGS=-O1"],
    "windows": WINDOWS,
    "cover-host": [f"-DCMAKE_CXX_FLAGS=-O1 {COVERAGE}"],
    "cover-windows": [*WINDOWS, f"-DCMAKE_CXX_FLAGS={COVERAGE}",
                      "-DCMAKE_CXX_FLAGS_MINSIZEREL=-O1 -DNDEBUG"],
}
GCOV = {"host": "gcov", "windows": "x86_64-w64-mingw32-gcov-posix"}
ENVIRONMENT = os.environ | {"CCACHE_BASEDIR": str(TREE), "CCACHE_NOHASHDIR": "1"}
# The drive that a program's counts go to, wherever the program itself was started.
COVERED = {"host": {}, "windows": {"GCOV_PREFIX": "Z:"}}
NO_STREAMS = {name: subprocess.DEVNULL for name in ("stdin", "stdout", "stderr")}
OF_TOOL = ("docs/", "scripts/mutant", "Makefile", "CONTRIBUTING")


def copy_tree():
    """Makes the copy equal to the checkout, touching only what differs. Returns a digest of all
    that a test's result may depend on."""
    listed = subprocess.check_output(["git", "ls-files", "-z"], cwd=ROOT, text=True)
    names = {name for name in listed.split("\0") if name and (ROOT / name).is_file()}
    digest = hashlib.sha256(json.dumps(BUILDS).encode())
    for name in sorted(names):
        text, copy = (ROOT / name).read_bytes(), TREE / name
        if not copy.is_file() or copy.read_bytes() != text:
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(ROOT / name, copy)
            shutil.copymode(ROOT / name, copy)
        if not name.startswith(OF_TOOL):
            digest.update(name.encode() + b"\0" + text + b"\0")
    for path in TREE.rglob("*"):
        name = path.relative_to(TREE)
        if name.parts[0] != "build" and path.is_file() and str(name) not in names:
            path.unlink()
    return digest.hexdigest()[:16]


def told(command, **how):
    return subprocess.run(command, cwd=TREE, env=ENVIRONMENT, stdin=subprocess.DEVNULL, text=True,
                          capture_output=True, **how)


def builds(build, targets=()):
    jobs = str(os.cpu_count() or 2)
    return told(["ninja", "-j", jobs, "-C", f"build/{build}", *targets])


def build_all(build):
    print("building", build, flush=True)
    done = told(["cmake", "-S", ".", "-B", f"build/{build}", "-G", "Ninja", *BUILDS[build]])
    if done.returncode == 0:
        done = builds(build)
    if done.returncode != 0:
        sys.exit(f"{done.stdout[-3000:]}{done.stderr[-3000:]}\n{build} does not build unmutated")


def keep_profile(source, target):
    """What a test can leave behind in the Wine prefix: the registry and the users' files."""
    target.mkdir(exist_ok=True)
    for registry in source.glob("*.reg"):
        shutil.copy(registry, target)
    users = pathlib.Path("drive_c") / "users"
    shutil.rmtree(target / users, ignore_errors=True)
    shutil.copytree(source / users, target / users, symlinks=True)


@contextlib.contextmanager
def session(side):
    """The environment that a side's tests need. A Windows one starts with the profile of a fresh
    prefix and ends its processes."""
    if side == "host":
        yield ENVIRONMENT
        return
    program, kept = TREE / "scripts" / "wine-session", WORK / "profile"
    if not kept.exists():
        subprocess.run([program, "true"], check=True, **NO_STREAMS)
        keep_profile(PREFIX, kept)
    keep_profile(kept, PREFIX)
    wait = 'echo "display $DISPLAY"; exec cat >/dev/null'
    streams = NO_STREAMS | {"stdin": subprocess.PIPE, "stdout": subprocess.PIPE}
    command = [program, "sh", "-c", wait]
    running = subprocess.Popen(command, text=True, start_new_session=True, **streams)
    try:
        display = next(line.split()[1] for line in running.stdout if line.startswith("display "))
        yield ENVIRONMENT | {"DISPLAY": display}
    finally:
        running.stdin.close()
        running.wait()


def discover(build, environment):
    """The tests of a build by name."""
    command = ["ctest", "--test-dir", f"build/{build}", "--show-only=json-v1"]
    with open(WORK / "discovered.json", "w+", encoding="utf-8") as output:
        streams = NO_STREAMS | {"stdout": output}
        subprocess.run(command, cwd=TREE, env=environment, check=True, **streams)
        output.seek(0)
        listed = json.load(output)["tests"]
    found = {}
    for test in listed:
        properties = {each["name"]: each["value"] for each in test["properties"]}
        # A parameter may be shown by its address, which no two builds share.
        name = test["name"].split("  # GetParam()")[0]
        found[name] = {"name": name, "command": test["command"],
                       "folder": properties["WORKING_DIRECTORY"],
                       "limit": properties.get("TIMEOUT", 300)}
    return found


def run(test, environment, limit):
    """"passed", "failed" or "timeout"; a test that skips itself has not passed."""
    log = WORK / "test.log"
    with open(log, "w", encoding="utf-8") as output:
        streams = NO_STREAMS | {"stdout": output, "stderr": output}
        process = subprocess.Popen(test["command"], cwd=test["folder"], env=environment,
                                   start_new_session=True, **streams)
        try:
            code = process.wait(limit)
        except subprocess.TimeoutExpired:
            return "timeout"
        finally:
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, signal.SIGKILL)
            process.wait()
    skipped = "[  SKIPPED ]" in log.read_text(encoding="utf-8", errors="replace")
    return "passed" if code == 0 and not skipped else "failed"


def counted_lines(side, suffix):
    """The lines of code by the product's files, as gcov's files tell: those that there are in all
    of .gcno, or, in all of .gcda, those that were run."""
    build = TREE / "build" / f"cover-{side}"
    files = [str(path) for path in build.rglob("*" + suffix) if "googletest" not in path.parts]
    lines = collections.defaultdict(set)
    for start in range(0, len(files), 40):
        command = [GCOV[side], "--json-format", "--stdout", *files[start : start + 40]]
        answers = subprocess.run(command, cwd=build, capture_output=True, text=True).stdout
        read = [json.loads(answer)["files"] for answer in answers.splitlines()]
        for each in itertools.chain.from_iterable(read):
            name = os.path.relpath(build / each["file"], TREE)
            counted = {n["line_number"] for n in each["lines"] if n["count"] or suffix == ".gcno"}
            if counted and PRODUCT.match(name):
                lines[name] |= counted
    return lines


def measure(side, tests, code):
    """Runs each test without faults: plainly for result and time, then counted for its lines."""
    print("running every test of", side, "twice", flush=True)
    with session(side) as environment:
        found = discover(side, environment)
        for test in found.values():
            begin = time.monotonic()
            test["result"] = run(test, environment, test["limit"])
            test |= {"side": side, "seconds": time.monotonic() - begin}
    for name, lines in counted_lines(side, ".gcno").items():
        code[name] |= lines
    with session(side) as environment:
        counted = discover(f"cover-{side}", environment)
        for name, test in found.items():
            for old in (TREE / "build" / f"cover-{side}").rglob("*.gcda"):
                old.unlink()
            run(counted[name], environment | COVERED[side], test["limit"])
            reached = counted_lines(side, ".gcda")
            test["lines"] = {file: sorted(lines) for file, lines in reached.items()}
            tests.append(test)


def measured(digest):
    """What was measured of the sources with this digest, by now or before."""
    kept = WORK / f"lines-{digest}.json"
    if not kept.exists():
        tests, code = [], collections.defaultdict(set)
        # The program ends itself in one step, which would lose its counts.
        main = (TREE / "app/main.cpp").read_text(encoding="utf-8")
        end = "  ::TerminateProcess(::GetCurrentProcess()"
        if main.count(end) != 1:
            sys.exit("app/main.cpp does not end the process as it did: see measured()")
        told_end = main.replace(end, "  __gcov_dump();" + end)
        declared = 'extern "C" void __gcov_dump();\n#line 1\n'
        (TREE / "app/main.cpp").write_text(declared + told_end, encoding="utf-8")
        for side in GCOV:
            build_all(f"cover-{side}")
        (TREE / "app/main.cpp").write_text(main, encoding="utf-8")
        for side in GCOV:
            build_all(side)
            measure(side, tests, code)
        for old in WORK.glob("lines-*.json"):
            old.unlink()
        lines = {name: sorted(lines) for name, lines in code.items()}
        kept.write_text(json.dumps({"tests": tests, "code": lines}))
    return json.loads(kept.read_text())
