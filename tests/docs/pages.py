#!/usr/bin/python3
"""tests/docs/pages.py TOLVANECTL: what the pages name is there: the targets of their links, the paths of this tree, the
targets of make, the presets, and the options of tolvanectl. Run by ctest."""
import functools
import json
import pathlib
import re
import subprocess
import sys

TOP = pathlib.Path(__file__).resolve().parents[2]
PAGES = [TOP / "README.md", TOP / "CHANGELOG.md", *sorted((TOP / "docs").glob("*.md")), *TOP.glob("core/**/*.md")]
FOLDERS = {path.name for path in TOP.iterdir() if path.is_dir() and not path.name.startswith(".")} - {"build"}
# The driver that docs/add-a-driver.md makes is nowhere else.
EXAMPLES = ("hal/silence",)
PRESETS = {preset["name"] for preset in json.loads((TOP / "CMakePresets.json").read_text())["configurePresets"]}
# Commands that have commands of their own.
GROUPS = ("aggregate", "ctl")
failures = []


def complain(page, text):
    failures.append(f"{page.relative_to(TOP)}: {text}")


def anchors(text):
    """The anchors that a page's headings get where it is shown."""
    headings = re.findall(r"^#+ (.*)$", re.sub(r"^```.*?^```$", "", text, flags=re.M | re.S), flags=re.M)
    return {re.sub(r"[^\w\- ]", "", heading).strip().lower().replace(" ", "-") for heading in headings}


def check_links(page, text):
    for target in re.findall(r"\]\(([^)\s]+)\)", text):
        if "://" in target:
            continue
        file, _, anchor = target.partition("#")
        path = (page.parent / file).resolve() if file else page
        if not path.exists():
            complain(page, f"links to {target}, which is not there")
        elif anchor and anchor not in anchors(path.read_text()):
            complain(page, f"links to {target}, which has no such heading")


def code(text):
    """What is written as code: the lines of blocks without their comments, and the spans in other text."""
    blocks = re.findall(r"^```(?:sh|text)?\n(.*?)^```$", text, flags=re.M | re.S)
    lines = [re.sub(r"\s#.*", "", line) for block in blocks for line in block.replace("\\\n", " ").splitlines()]
    spans = re.findall(r"`([^`]+)`", re.sub(r"^```.*?^```$", "", text, flags=re.M | re.S))
    return lines + [" ".join(span.split()) for span in spans]


def check_paths(page, text):
    for piece in code(text):
        for word in piece.split():
            parts = word.rstrip(":,;").split("/")
            is_path = len(parts) > 1 and parts[0] in FOLDERS and re.fullmatch(r"[\w./@{},-]+", word)
            is_placeholder = any(part.isupper() for part in parts) or word.startswith(EXAMPLES)
            if not is_path or is_placeholder:
                continue
            for path in alternatives(word.rstrip(":,;")):
                if not any((folder / path).exists() for folder in (TOP, page.parent)):
                    complain(page, f"names {path}, which is not there")


def alternatives(word):
    """a/{b,c} is a/b and a/c."""
    group = re.search(r"\{([^}]*)\}", word)
    return [word.replace(group.group(), choice) for choice in group.group(1).split(",")] if group else [word]


def check_targets(page, text):
    targets = set(re.findall(r"^(\w+):", (TOP / "Makefile").read_text(), flags=re.M))
    for piece in code(text):
        for target in re.findall(r"(?:^|trixie )make (\w+)$", piece.strip()):
            if target not in targets:
                complain(page, f"names make {target}, which is not there")
        for preset in re.findall(r"--preset (\w+)", piece):
            if preset not in PRESETS:
                complain(page, f"names the preset {preset}, which is not there")


@functools.lru_cache
def options(*command):
    result = subprocess.run([sys.argv[1], *command, "--help"], capture_output=True, text=True, check=False)
    # An unknown command gets the help of the program.
    is_known = f"Usage: tolvanectl {' '.join(command)} " in result.stdout
    return set(re.findall(r"--[a-z][a-z-]*", result.stdout)) if is_known else None


def known_options(words):
    """The options of a command, and of its own commands among the words. None if it is not there."""
    known = options(words[0])
    if known is None or words[0] not in GROUPS or len(words) == 1:
        return known
    own = [options(words[0], word) for word in words[1:] if re.fullmatch(r"[a-z][a-z-]*", word)]
    own = [found for found in own if found is not None]
    return known.union(*own) if own or words[1].startswith("-") else None


def check_options(page, text):
    for piece in code(text):
        for words in re.findall(r"(?:^|\s|/)tolvanectl ([a-z].*)", piece):
            words = words.split()
            known = known_options(words)
            if known is None:
                complain(page, f"names tolvanectl {' '.join(words[:2])}, which is not there")
                continue
            for option in re.findall(r"(?:^|\s)(--[a-z][a-z-]*)", " ".join(words)):
                if option not in known:
                    complain(page, f"names tolvanectl {words[0]} {option}, which is not there")


for page in PAGES:
    text = page.read_text()
    for check in (check_links, check_paths, check_targets, check_options):
        check(page, text)
print("\n".join(failures) or f"{len(PAGES)} pages name what is there")
sys.exit(bool(failures))
