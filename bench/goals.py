"""What each measure is compared with, and how far it may be from it."""


def ratio(name, measure, goal, moonshot=None, **more):
    """Our figure divided by the floor's is at most so much."""
    return {
        "name": name,
        "measure": measure,
        "of": "ratio",
        "goal": goal,
        "moonshot": moonshot,
        **more,
    }


def own(name, measure, goal, moonshot=None, **more):
    """Our figure itself is at most so much; `least`: at least."""
    return {**ratio(name, measure, goal, moonshot, **more), "of": "ours"}


HOT = "one change, hot"
TURNS = "one change, hot, in turns of 100"
COLD = "one change, cold, in 1000000 entries"
MIRROR = "initial mirror of 1,100,000 entries, per entry"
DROP = "dropping a root over 40,000 matches, per match"
SUSPEND = "suspending and resuming 40,000 matches, per match"
BYTES = "heap bytes per entry, "
RING = "ours, ring on"

GOALS = [
    ratio("one change, hot", HOT, 1.4, 1.15),
    ratio("one change, hot, ring on", HOT, 2.0, 1.4, who=RING),
    ratio("one change, hot, ring on, in turns of 100", TURNS, 2.0, 1.4, who=RING, against=HOT),
    ratio("one change, hot, against std", HOT, 1.0, floor="std"),
    ratio("one change, hot, ring on, against std", HOT, 1.0, who=RING, floor="std"),
    ratio("one change, cold, against std", COLD, 0.75, 0.55, floor="std"),
    ratio("one change, cold, ring on, against std", COLD, 0.82, 0.55, who=RING, floor="std"),
    ratio("initial mirror, against std", MIRROR, 0.6, 0.5, floor="std"),
    ratio("initial mirror, ring on, against std", MIRROR, 0.75, 0.55, who=RING, floor="std"),
    ratio("initial mirror, against absl", MIRROR, 1.0, floor="absl"),
    own("heap bytes per entry, version 2", BYTES + "version 2", 55, 46),
    own("heap bytes per entry, with machines", BYTES + "with machines", 70, 60),
    ratio("notification of 8 subscribers", "notification of 8 subscribers", 1.25, 1.1),
    own("notification of 1 subscriber", "notification of 1 subscriber", 2.5, 2.0),
    own("notification of 0 subscribers", "notification of 0 subscribers", 0.6, 0.4),
    own("trace record with its own clock read", "trace record with its own clock read", 12, 9.8),
    own("trace record without a clock", "trace record without a clock", 6, 4.4),
    own("trace record, disabled", "trace record, disabled", 0.5, 0.35),
    ratio("set of 16: hit", "set of 16: hit", 1.3, 1.0, floor="absl"),
    ratio("set of 16: insert", "set of 16: insert", 1.0, 0.9, floor="absl"),
    *(
        ratio(f"set of {size}: {what}", f"set of {size}: {what}", goal, 1.2, floor="absl")
        for size in (100, 1000, 10000)
        for what, goal in (("hit", 1.5), ("miss", 2), ("erase", 2))
    ),
    ratio("set of 1000000: hit", "set of 1000000: hit", 1.3, 1.1, floor="absl"),
    own("walk, per entry", "walk, per entry", 1, 0.65),
    ratio("walk with deletions", "walk with deletions, per entry", 1.5, 1.0, floor="absl"),
    own("object creation and destruction", "object creation and destruction", 2.5, 1.7),
    own("object pair after a shuffled teardown", "object pair after a shuffled teardown", 20, 9),
    own("pointer copy, switch off", "pointer copy and destruction, switch off", 1.0, 0.8),
    own("pointer copy, switch on", "pointer copy and destruction, switch on", 13, 12.4),
    *(
        ratio(f"a burst of {n} changes, per change", f"a burst of {n} changes, per change", 3, 2)
        for n in (1000, 10000, 100000)
    ),
    ratio("suspending and resuming, against destruction", SUSPEND, 3, 2, against=DROP),
    ratio("dropping a root, against destruction", DROP, 3, 2),
    ratio("reading a document", "reading a document", 2),
    own("printing a document", "printing a document, MB/s", 200, least=True),
    ratio("vpm translate, peak memory", "vpm translate, peak memory in MiB", 1.2),
]

# The file, the title, where the size stands in the measure, and what the size is of.
PLOTS = [
    ("change", "One change at a random place", r"one change, cold, in (\d+) entries", "set entries"),
    ("set-hit", "Look-up of a key that is there", r"set of (\d+): hit", "keys"),
    ("set-miss", "Look-up of a key that is not there", r"set of (\d+): miss", "keys"),
    ("set-insert", "Insertion, growth included", r"set of (\d+): insert", "keys"),
    ("set-erase", "Deletion", r"set of (\d+): erase", "keys"),
    ("burst", "A change in a burst below one VRF", r"a burst of (\d+) changes, .*", "changes"),
]
