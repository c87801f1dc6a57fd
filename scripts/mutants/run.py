"""Commands with a limit, and test programs."""
import collections
import resource
import subprocess

# A run of tests that takes so much longer than they do hangs: in the processor's time, and by the
# clock for one that waits.
PROCESSOR_SECONDS = 6
CLOCK_SECONDS = 60
MEMORY = 8 << 30
BATCH = 100_000  # characters of a filter, which is one argument

Verdict = collections.namedtuple("Verdict", "killed by")


class NoCompile(Exception):
    pass


def compiled(command, cwd=None):
    """Runs a compiler or linker; one that refuses the source ends the attempt."""
    done = subprocess.run(command, cwd=cwd, capture_output=True, text=True, shell=isinstance(command, str))
    if done.returncode != 0:
        raise NoCompile(done.stderr or done.stdout)


def must(command, **options):
    """Runs a command that cannot fail but for a fault of the tool or the machine."""
    done = subprocess.run(command, capture_output=True, text=True, **options)
    if done.returncode != 0:
        shown = command if isinstance(command, str) else " ".join(command)
        raise SystemExit(f"{shown[:400]}\n{done.stdout[-4000:]}{done.stderr[-4000:]}")
    return done.stdout


def run_tests(program, tests, seconds, env, cwd):
    """Runs tests until one fails. seconds: what they take undisturbed."""

    def limit():
        processor = int(PROCESSOR_SECONDS + 5 * seconds)
        resource.setrlimit(resource.RLIMIT_CPU, (processor, processor))
        resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

    try:
        done = subprocess.run(
            [program, "--gtest_fail_fast", "--gtest_filter=" + ":".join(tests)],
            env=env, cwd=cwd, preexec_fn=limit, capture_output=True, text=True, errors="replace",
            timeout=CLOCK_SECONDS + 20 * seconds, stdin=subprocess.DEVNULL,
        )  # fmt: skip
    except subprocess.TimeoutExpired:
        return Verdict(True, "hangs")
    if done.returncode == 0:
        if f"[  PASSED  ] {len(tests)} test" not in done.stdout:
            raise SystemExit(f"{program} has not run its {len(tests)} tests:\n{done.stdout[-2000:]}")
        return Verdict(False, "")
    for line in reversed(done.stdout.splitlines()):
        if line.startswith(("[  FAILED  ] ", "[ RUN      ] ")):
            name = line[13:].split(",")[0].split(" (")[0]
            if "." in name:
                return Verdict(True, name if done.returncode > 0 else f"{name} (signal {-done.returncode})")
    return Verdict(True, f"exit status {done.returncode}")


def within(tests, seconds_of, limit):
    """The first ones, as many as take so many seconds."""
    spent = 0.0
    for at, test in enumerate(tests):
        spent += seconds_of[test]
        if spent > limit:
            return tests[: at + 1]
    return tests


def batches(tests, sizes, seconds_of):
    """In order, a few first, with what each batch takes."""
    at, sizes = 0, list(sizes)
    while at < len(tests):
        size = sizes.pop(0) if sizes else len(tests)
        some, length = [], 0
        while at < len(tests) and len(some) < size and length < BATCH:
            some.append(tests[at])
            length += len(tests[at]) + 1
            at += 1
        yield some, sum(seconds_of[test] for test in some)
