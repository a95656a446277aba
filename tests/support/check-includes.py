#!/usr/bin/env python3
"""Checks that no folder of src/ includes one above it. Prints file and line of a breach."""
import pathlib
import re
import sys

# The floors of the house, lowest first; a folder may include its own floor's ports listed in ALLOWED_BESIDE and all below.
FLOOR = {
    "base": 1, "agents": 2, "approval": 3, "settings": 4, "pet": 5, "hooks": 5, "sessions": 6, "intake": 7,
    "platform": 8, "app": 9,
}
# Views see their own feature, everything below and the models of the others, but no other feature's view.
VIEW_FLOOR = 8
# Ports are plain headers at the top of platform/: whoever needs a service of the desktop names its port.
PORT = re.compile(r"^platform/[A-Za-z]+\.h$")
PLATFORM_MAY = 5

root = pathlib.Path(sys.argv[1]) / "src"
breaches = 0
for path in sorted(root.rglob("*")):
    if path.suffix not in (".h", ".cpp"):
        continue
    parts = path.relative_to(root).parts
    own = parts[0]
    is_view = "view" in parts
    if own == "bridge":
        continue
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        match = re.match(r'\s*#\s*include\s*"([^"]+)"', line)
        if not match:
            continue
        target = match.group(1)
        other = target.split("/")[0]
        if other not in FLOOR or other == own or PORT.match(target):
            continue
        target_is_view = "/view/" in target
        if own == "app":
            continue
        floor = VIEW_FLOOR if is_view else FLOOR[own]
        if own == "platform":
            allowed = FLOOR[other] <= PLATFORM_MAY and not target_is_view
        elif is_view:
            allowed = FLOOR[other] <= VIEW_FLOOR - 1 and not target_is_view or target == "settings/view/Theme.h"
        else:
            allowed = FLOOR[other] < floor and not target_is_view
        if not allowed:
            print(f"{path}:{number}: {own} must not include {target}")
            breaches += 1
sys.exit(1 if breaches else 0)
