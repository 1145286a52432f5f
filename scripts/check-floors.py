#!/usr/bin/env python3
"""Checks that the tree keeps to the floors that docs/architecture.md draws.

    scripts/check-floors.py [ROOT]

Reads the table under "## Floors" of ROOT/docs/architecture.md: each row names a floor and, in
backticks, the files that stand on it (shell patterns; the first row from the top that matches a file
holds). Then it looks at every #include "..." of the C++ files in src and tools and complains when

  - a file includes one from a higher floor, or from another row of its own floor,
  - files include each other in a circle,
  - folders do, unless both ends of every include that closes the circle are listed under
    "### Circles of folders" as a line "- `from` -> `to`",
  - a file stands on no floor, a listed circle does not exist, or an include names no file.

Ends with status 1 when there is a complaint, 2 when the document cannot be read as described.
"""

import fnmatch
import re
import sys
from pathlib import Path

INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)
PLACES = ("src", "tools")
ENDINGS = {".cpp", ".h", ".hpp"}


def section(text, heading):
    """The lines below `heading` up to the next heading of the same or a higher rank."""
    rank = len(heading) - len(heading.lstrip("#"))
    lines, inside = [], False
    for line in text.splitlines():
        if inside and re.match(r"#{1,%d} " % rank, line):
            break
        if inside:
            lines.append(line)
        inside = inside or line.strip() == heading
    return lines


def read_rows(text):
    """The rows of the table as (floor, patterns), in the document's order."""
    rows = []
    for line in section(text, "## Floors"):
        cells = [cell.strip() for cell in line.strip().strip("|").split("|")]
        if line.lstrip().startswith("|") and len(cells) > 1 and cells[0].isdigit():
            rows.append((int(cells[0]), re.findall(r"`([^`]+)`", cells[1])))
    return rows


def read_folder_circles(text):
    found = set()
    for line in section(text, "### Circles of folders"):
        if match := re.match(r"\s*- `([^`]+)` -> `([^`]+)`", line):
            found.add((match[1], match[2]))
    return found


def row_of(path, rows):
    for number, (_, patterns) in enumerate(rows):
        if any(fnmatch.fnmatch(path, pattern) for pattern in patterns):
            return number
    return None


def read_includes(root):
    """Every source file with the project's files that it includes; and the complaints."""
    files = sorted(
        path.relative_to(root).as_posix()
        for place in PLACES
        for path in (root / place).rglob("*")
        if path.suffix in ENDINGS
    )
    known, includes, complaints = set(files), {}, []
    for name in files:
        includes[name] = []
        for target in INCLUDE.findall((root / name).read_text(encoding="utf-8")):
            beside = (Path(name).parent / target).as_posix()
            candidates = [beside] + [f"{place}/{target}" for place in PLACES]
            hit = next((candidate for candidate in candidates if candidate in known), None)
            if hit:
                includes[name].append(hit)
            elif not (root / "virtual_kinect").exists() or not any(
                (root / "virtual_kinect").rglob(Path(target).name)
            ):
                complaints.append(f'{name}: includes "{target}", which is no file of the tree')
    return includes, complaints


def circles(graph):
    """The strongly connected parts with more than one member (Tarjan, without recursion)."""
    index, low, on_stack, stack, found = {}, {}, set(), [], []
    for start in graph:
        if start in index:
            continue
        work = [(start, iter(graph[start]))]
        index[start] = low[start] = len(index)
        stack.append(start)
        on_stack.add(start)
        while work:
            node, targets = work[-1]
            for target in targets:
                if target not in index:
                    index[target] = low[target] = len(index)
                    stack.append(target)
                    on_stack.add(target)
                    work.append((target, iter(graph.get(target, ()))))
                    break
                if target in on_stack:
                    low[node] = min(low[node], index[target])
            else:
                work.pop()
                if work:
                    low[work[-1][0]] = min(low[work[-1][0]], low[node])
                if low[node] == index[node]:
                    part = []
                    while not part or part[-1] != node:
                        part.append(stack.pop())
                        on_stack.discard(part[-1])
                    if len(part) > 1:
                        found.append(sorted(part))
    return found


def folder_graph(includes):
    graph = {}
    for name, targets in includes.items():
        folder = Path(name).parent.as_posix()
        graph.setdefault(folder, set())
        for target in targets:
            other = Path(target).parent.as_posix()
            graph.setdefault(other, set())
            if other != folder:
                graph[folder].add(other)
    return graph


def check_floors(includes, rows):
    complaints, at = [], {name: row_of(name, rows) for name in includes}
    for name, targets in includes.items():
        if at[name] is None:
            complaints.append(f"{name}: stands on no floor")
            continue
        floor = rows[at[name]][0]
        for target in targets:
            if at[target] is None or at[target] == at[name]:
                continue
            if rows[at[target]][0] >= floor:
                complaints.append(
                    f"{name} (floor {floor}) includes {target} (floor {rows[at[target]][0]})"
                )
    return complaints


def check_folders(includes, allowed):
    """A circle of folders must vanish when the listed includes between folders are left out."""
    graph = folder_graph(includes)
    complaints = [
        f"listed include between folders does not exist: {start} -> {end}"
        for start, end in sorted(allowed)
        if end not in graph.get(start, ())
    ]
    rest = {
        start: {end for end in ends if (start, end) not in allowed} for start, ends in graph.items()
    }
    complaints += ["circle of folders: " + ", ".join(part) for part in circles(rest)]
    return complaints


def main():
    root = Path(sys.argv[1] if len(sys.argv) > 1 else Path(__file__).resolve().parent.parent)
    text = (root / "docs/architecture.md").read_text(encoding="utf-8")
    rows = read_rows(text)
    if not rows or any(not patterns for _, patterns in rows):
        print("docs/architecture.md: no table of floors with files in backticks", file=sys.stderr)
        return 2
    includes, complaints = read_includes(root)
    complaints += check_floors(includes, rows)
    complaints += ["circle of files: " + ", ".join(part) for part in circles(includes)]
    complaints += check_folders(includes, read_folder_circles(text))
    for complaint in complaints:
        print(complaint)
    count = sum(len(targets) for targets in includes.values())
    if not complaints:
        print(f"Floors hold: {len(includes)} files, {count} includes, none upwards, no circle.")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
