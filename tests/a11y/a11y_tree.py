#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
# Walks the accessibility tree of the running Tarnwell over AT-SPI and fails
# when an item a user can reach (focusable, or with a press action) has no
# role or no name, or when a slider gives no range. Names given on the command
# line must show up (as "Name" or "Role:Name"); the tree is read again until
# they do or 10 s have passed.
# Usage: a11y_tree.py SCREEN [NAME | ROLE:NAME]...
import sys
import time

import pyatspi

BAD_ROLES = {pyatspi.ROLE_INVALID, pyatspi.ROLE_UNKNOWN, pyatspi.ROLE_REDUNDANT_OBJECT}
PRESS_ACTIONS = {"press", "click", "toggle", "activate"}


def application():
    for app in pyatspi.Registry.getDesktop(0):
        if app is not None and app.name.lower() == "tarnwell":
            return app
    return None


def walk(node):
    yield node
    for i in range(node.childCount):
        child = node.getChildAtIndex(i)
        if child is not None:
            yield from walk(child)


def pressable(node):
    try:
        action = node.queryAction()
    except NotImplementedError:
        return False
    return any(action.getName(i).lower() in PRESS_ACTIONS for i in range(action.nActions))


def survey(app):
    """The problems and the (role, name) of every item shown."""
    problems, seen = [], set()
    for node in walk(app):
        states = node.getState()
        if not states.contains(pyatspi.STATE_SHOWING):
            continue
        role = node.getRole()
        name = (node.name or "").strip()
        seen.add((node.getRoleName(), name))
        reachable = states.contains(pyatspi.STATE_FOCUSABLE) or pressable(node)
        if reachable and (role in BAD_ROLES or not name):
            problems.append(f"{node.getRoleName() or 'no role'} \"{name}\" (child of {node.parent.getRoleName()} \"{node.parent.name}\")")
        if role == pyatspi.ROLE_SLIDER:
            value = node.queryValue()
            if not value.maximumValue > value.minimumValue:
                problems.append(f"slider \"{name}\" gives no range ({value.minimumValue}...{value.maximumValue})")
    return problems, seen


def found(expected, seen):
    if ":" in expected:
        role, name = expected.split(":", 1)
        return (role, name) in seen
    return any(name == expected for _, name in seen)


def main():
    screen, expected = sys.argv[1], sys.argv[2:]
    deadline = time.monotonic() + 10
    while True:
        app = application()
        problems, seen = survey(app) if app else (["no application \"tarnwell\" on the accessibility bus"], set())
        missing = [e for e in expected if not found(e, seen)]
        if (not problems and not missing) or time.monotonic() > deadline:
            break
        time.sleep(0.3)
    for p in problems:
        print(f"FAIL: {screen}: {p}")
    for m in missing:
        print(f"FAIL: {screen}: no item named \"{m}\"")
    if problems or missing:
        print(f"--- {screen}: what is shown")
        for role, name in sorted(seen):
            print(f"  {role}: {name}")
        return 1
    print(f"ok: {screen}: {len(seen)} items shown, each reachable one named")
    return 0


if __name__ == "__main__":
    sys.exit(main())
